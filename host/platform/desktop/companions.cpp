#include "host/platform/desktop/companions.h"

#include "host/platform/desktop/text.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace orvanel {

namespace {

/// How a terminal program takes the command that it is to run.
struct TerminalProgram {
    const char* name;
    const char* option;
};
constexpr TerminalProgram terminal_programs[]{
    {"x-terminal-emulator", "-e"}, {"gnome-terminal", "--"}, {"konsole", "-e"},
    {"xfce4-terminal", "-x"},      {"xterm", "-e"},
};

QString beside_program(const QString& name) {
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + '/' + name);
}

/// As QProcess::splitCommand takes it back.
QString in_double_quotes(const QString& word) {
    return '"' + QString(word).replace('"', "\"\"\"") + '"';
}

QString in_a_terminal() {
    for (const TerminalProgram& program : terminal_programs)
        if (!QStandardPaths::findExecutable(program.name).isEmpty())
            return QString(program.name) + ' ' + program.option + ' ';
    return {};
}

}  // namespace

std::string help_page() {
    const QString installed = beside_program("../share/doc/orvanel42/manual/index.html");
    const QString built = beside_program("../manual/index.html");
    return (QFileInfo::exists(installed) || !QFileInfo::exists(built) ? installed : built)
        .toStdString();
}

std::string terminal_command(const std::string& folder) {
    const QString companion = beside_program("Glasterm");
    if (QFileInfo(companion).isExecutable())
        return (in_double_quotes(companion) + " Orvanel42").toStdString();
    const QString command = in_a_terminal() +
                            in_double_quotes(beside_program("orvanel42-terminal")) + " --dir " +
                            in_double_quotes(QDir(to_qt(folder)).absolutePath());
    return command.toStdString();
}

}  // namespace orvanel
