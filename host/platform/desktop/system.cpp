// What window_system.h asks of the desktop beside our windows: clipboard, other programs, help.

#include "host/platform/desktop/text.h"
#include "host/platform/window_system.h"
#include "host/skin/dib.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QFileInfo>
#include <QImage>
#include <QProcess>
#include <QUrl>

#include <cstdint>
#include <vector>

namespace orvanel {

void set_clipboard(std::span<const std::uint8_t> dib) {
    const std::vector<std::uint8_t> file = bmp_file(dib);
    const QImage picture = QImage::fromData(file.data(), static_cast<int>(file.size()), "BMP");
    if (!picture.isNull()) QApplication::clipboard()->setImage(picture);
}

void start_program(const std::string& command) {
    QStringList words = QProcess::splitCommand(to_qt(command));
    if (words.isEmpty()) return;
    const QString program = words.takeFirst();
    QProcess::startDetached(program, words);
}

void show_help(const std::string& path) {
    const QString page = to_qt(path);
    if (QFileInfo::exists(page) && QDesktopServices::openUrl(QUrl::fromLocalFile(page))) return;
    const std::string text = QFileInfo::exists(page)
                                 ? "Nothing here can show the manual. It is in\n" + path
                                 : "The manual is not installed. It would be\n" + path;
    open_message_box("HD Orvanel42 simulator", text);
}

void sound_beep() { QApplication::beep(); }

}  // namespace orvanel
