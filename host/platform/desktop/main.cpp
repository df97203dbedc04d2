// The window program: command line, surroundings, and the life of the event loop.

#include "base/command_line.h"
#include "base/files.h"
#include "base/folder_lock.h"
#include "base/visible.h"
#include "host/platform/desktop/boxes.h"
#include "host/platform/desktop/companions.h"
#include "host/platform/desktop/window.h"
#include "host/platform/instance/instance.h"
#include "host/platform/instance/instance_client.h"
#include "host/platform/life/start.h"
#include "host/platform/life/start_port.h"
#include "host/platform/real_time/real_time.h"
#include "host/platform/system/process.h"
#include "host/platform/system/wake.h"
#include "host/program/image_file.h"
#include "host/program/program_folder.h"
#include "host/window/roof/menu_command.h"
#include "host/window/roof/program_life.h"
#include "link/feeds/feeds.h"
#include "seam/platform.h"

#include <QApplication>
#include <QSocketNotifier>
#include <QString>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

constexpr int failed = 1;

constexpr std::chrono::milliseconds between_tries{50};

void tell_error(const std::string& what) { orvanel::tell_user("orvanel42: error: " + what); }

struct Options {
    std::string file;
    std::string folder;
    std::string image;
    int mem_kib = 0;  // 0: not given
    std::string serial;
    std::string protocol;
    bool new_instance = false;
    bool says_where = false;  // by an option, on a command line, whose user reads what it says
};

/// The file that a word names. It may stand in quotes, as where a command line was put together by
/// others; but a name can begin with a quote of its own.
std::string without_quotes(const std::string& word) {
    std::error_code ignored;
    return std::filesystem::exists(word, ignored) ? word : std::string(orvanel::unquoted(word));
}

std::string not_to_open(const std::string& word) {
    return orvanel::file_fault(without_quotes(word));
}

std::vector<orvanel::Option> options_into(Options& options) {
    return {
        {.names = "FILE",
         .place = &options.file,
         .help = "What the module opens once it runs: commands, a picture (PNG or BMP), or a kit, "
                 "which is built",
         .fault = not_to_open},
        {.names = "--dir",
         .place = &options.folder,
         .help = "Keep the settings and the EEPROM image in DIR, as simulator.ini and "
                 "Orvanel42.bin, not in the program's own folder",
         .value_name = "DIR"},
        {.names = "--new-instance",
         .place = &options.new_instance,
         .help = "Never hand FILE to the program that runs in DIR already: be another one, or fail",
         .needs = {"--dir"}},
        {.names = "--image",
         .place = &options.image,
         .help = "Load FILE as the EEPROM image; neither it nor the settings are kept",
         .value_name = "FILE",
         .fault = orvanel::file_fault,
         .excludes = {"--dir"}},
        {.names = "--mem",
         .place = &options.mem_kib,
         .help = "EEPROM size in KiB, with nothing kept as with --image; else the setting memKB "
                 "decides",
         .value_name = "32|64",
         .one_of = {32, 64},
         .excludes = {"--dir"}},
        {.names = "--serial",
         .place = &options.serial,
         .help = "What stands behind COM1, which is open from the start: pty[:LINK], "
                 "tcp:[HOST:]PORT, stdio, or a device such as /dev/ttyUSB0[@BAUD]. The line speaks "
                 "Pactlink unless --protocol or the setting protocol says otherwise: plain bytes "
                 "then vanish in silence",
         .value_name = "LINE",
         .fault = orvanel::serial_option_fault},
        {.names = "--protocol",
         .place = &options.protocol,
         .help = "What the line speaks in this run, plain bytes or Pactlink; without it the "
                 "setting protocol decides",
         .value_name = "plain|pactlink",
         .fault = orvanel::protocol_option_fault},
    };
}

constexpr const char* footer =
    "Exit status: 0 at the end of the window, or when the program that runs already has FILE; "
    "1 something couldn't be saved or shown; 2 a wrong command line, a folder that is in use, or a "
    "file or standard output that can't be read or written.";

/// The folder to live in; empty if nothing is to be kept.
std::string folder_of(const Options& options) {
    if (!options.folder.empty()) return options.folder;
    return options.image.empty() && options.mem_kib == 0 ? orvanel::own_folder() : "";
}

/// One program for each folder: this one, or the one that runs there already gets the file. The
/// result is below 0 if it is this one, else the status to end with; `fault` is why if that is no
/// success.
int claim_folder(const Options& options, std::string& fault) {
    using namespace orvanel;
    // One that is starting takes no messages yet, and one that is ending takes none any more.
    const Deadline end = std::chrono::steady_clock::now() + answer_limit;
    for (;;) {
        const FolderLock lock = lock_folder(options.folder, fault);
        if (lock == FolderLock::taken) return -1;
        if (lock == FolderLock::failed || options.new_instance) break;
        std::string refusal;
        const HandOver result = hand_over(options.folder, options.file, end, refusal);
        if (result == HandOver::done) return EXIT_SUCCESS;
        if (result == HandOver::failed) {
            fault = refusal;
            break;
        }
        if (std::chrono::steady_clock::now() >= end) {
            fault += ", which doesn't answer; has it been stopped?";
            break;
        }
        std::this_thread::sleep_for(between_tries);
    }
    return orvanel::wrong_command_line;
}

/// Saves what the folder keeps, the image as it stood when the program was told to end. The result
/// is what went wrong, which has been said on standard error.
std::vector<std::string> save_memory() {
    std::vector<std::string> faults = orvanel::save_program_folder();
    if (!orvanel::image_notice.empty()) orvanel::tell_user("orvanel42: " + orvanel::image_notice);
    for (const std::string& fault : faults)
        tell_error(fault);
    return faults;
}

constinit std::atomic<bool> unsaved{false};  // a run that isn't saved yet; for any thread
constinit bool saving = false;

/// What is wrong with the save, as save_memory tells it.
std::vector<std::string> save_run() {
    saving = true;
    std::vector<std::string> faults = save_memory();
    unsaved = false;
    unsaved.notify_all();
    return faults;
}

/// Qt ends the process from within its event loop when the display goes away. The module ends in
/// order and all is saved all the same; there is no window for a message.
void on_exit() {
    if (!unsaved || saving) return;
    orvanel::close_instance();
    orvanel::stop_module();
    save_run();
}

/// The event loop, with messages of others for as long as it runs.
int run_event_loop() {
    const std::string fault = orvanel::open_instance(true);
    if (!fault.empty()) orvanel::tell_user("orvanel42: no companion can connect: " + fault);
    QSocketNotifier messages(QSocketNotifier::Read);
    if (orvanel::instance_fd() >= 0) {
        messages.setSocket(orvanel::instance_fd());
        messages.setEnabled(true);
    }
    QObject::connect(&messages, &QSocketNotifier::activated, &messages, orvanel::serve_instance);
    const int status = QApplication::exec();
    messages.setEnabled(false);
    orvanel::close_instance();
    return status;
}

/// The event loop from its start to its end, with what has to be saved after it.
int run_window() {
    unsaved = true;
    std::atexit(on_exit);
    const int status = run_event_loop();
    orvanel::close_window();
    const std::vector<std::string> faults = save_run();
    orvanel::close_end_signals();  // not before: an impatient second one would cut the save off
    if (faults.empty()) return status;
    for (const std::string& fault : faults)
        if (!orvanel::ended_by_signal)
            orvanel::show_fault_box("Error: HD Orvanel42 simulator", fault);
    return failed;
}

/// Of Wayland's connection Qt speaks only when that is broken, and then ends the process in a way
/// that runs nothing of ours.
bool tells_the_end(const QString& text) {
    return text.startsWith(QStringLiteral("The Wayland connection"));
}

/// The main thread and one of Qt's own find it out, each for itself. The latter waits for the save,
/// or it would end the process in the middle of it.
void display_is_gone() {
    if (orvanel::on_main_thread())
        on_exit();
    else
        unsaved.wait(true);
}

/// Qt ends a program that finds no display by abort, which looks like a crash.
void on_qt_message(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
    if (type == QtFatalMsg)
        tell_error(text.toStdString());
    else
        orvanel::tell_user("orvanel42: " + text.toStdString());
    if (tells_the_end(text)) display_is_gone();
    if (type == QtFatalMsg) std::_Exit(failed);
}

/// Sets what Qt reads from the environment, as far as the user hasn't. False if there is no
/// display to open a window on.
bool prepare_display() {
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) return true;
    if (!qEnvironmentVariableIsEmpty("DISPLAY")) {
        // Wherever X is to be had it goes first: it lets a window choose its place.
        qputenv("QT_QPA_PLATFORM", "xcb;wayland");
        return true;
    }
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

/// The start ends while there is no Qt yet. Who has started the program from a menu of the desktop
/// doesn't see standard error.
int refuse_start(const Options& options, const std::string& fault, int& argc, char** argv) {
    tell_error(fault);
    if (options.says_where || !prepare_display()) return orvanel::wrong_command_line;
    qInstallMessageHandler(on_qt_message);
    argc = 1;
    const QApplication application(argc, argv);
    orvanel::show_fault_box(orvanel::start_fault_caption, "Error: " + fault);
    return orvanel::wrong_command_line;
}

int run(int argc, char** argv) {
    Options options;
    const orvanel::CommandLine line{.program = "orvanel42",
                                    .version = ORVANEL_VERSION,
                                    .help =
                                        "Simulator of the HD Orvanel42 display module, in a window",
                                    .options = options_into(options),
                                    .footer = footer};
    if (const int end = orvanel::read_command_line(line, argc, argv); end >= 0)
        return orvanel::output_is_whole(line.program) ? end : orvanel::wrong_command_line;
    // For whoever opens it, here or elsewhere; and so it never begins with a quote.
    if (!options.file.empty())
        options.file = std::filesystem::absolute(without_quotes(options.file)).string();
    options.says_where = !options.folder.empty() || !options.image.empty() || options.mem_kib != 0;
    options.folder = folder_of(options);
    if (options.folder.empty() && options.image.empty() && options.mem_kib == 0)
        return refuse_start(options, "there is no folder to live in; name one with --dir", argc,
                            argv);
    std::string fault;
    const int status = options.folder.empty() ? -1 : claim_folder(options, fault);
    if (status == EXIT_SUCCESS) return status;
    if (status > 0) return refuse_start(options, fault, argc, argv);
    if (!orvanel::built_in_data_is_whole()) return EXIT_SUCCESS;
    fault = orvanel::load_start({.folder = options.folder,
                                 .image = options.image,
                                 .mem_kib = options.mem_kib,
                                 .serial = options.serial,
                                 .protocol = options.protocol});
    if (!fault.empty()) return refuse_start(options, fault, argc, argv);
    if (!prepare_display()) {
        tell_error("there is no display to open a window on (DISPLAY and WAYLAND_DISPLAY are not "
                   "set); orvanel42-headless runs without one");
        return failed;
    }
    qInstallMessageHandler(on_qt_message);
    argc = 1;  // the rest is ours and not for Qt
    const QApplication application(argc, argv);
    if (!orvanel::prepare_window()) {
        tell_error("no file descriptor left");
        return failed;
    }
    orvanel::set_companions(orvanel::help_page(), orvanel::terminal_command(options.folder));
    fault = orvanel::open_window(options.file, options.serial);
    if (!fault.empty()) {
        orvanel::close_end_signals();               // no window listens to them
        orvanel::tell_user("orvanel42: " + fault);  // which begins with "Error:"
        orvanel::show_fault_box(orvanel::start_fault_caption, fault);
        return failed;
    }
    if (!orvanel::image_notice.empty())
        orvanel::open_message_box(orvanel::MessageOf::host, orvanel::start_fault_caption,
                                  orvanel::image_notice);
    orvanel::image_notice.clear();
    return run_window();
}

}  // namespace

int main(int argc, char** argv) {
    orvanel::prepare_process();
    try {
        return run(argc, argv);
    } catch (const std::exception& fault) {
        // The system has no memory or no thread left.
        tell_error(fault.what());
        return failed;
    }
}
