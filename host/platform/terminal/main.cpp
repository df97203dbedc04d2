// orvanel42-terminal: the companion of a running module.

#include "base/command_line.h"
#include "base/quoting.h"
#include "base/standard_output.h"
#include "base/visible.h"
#include "base/words.h"
#include "host/platform/instance/instance_client.h"
#include "host/platform/system/process.h"
#include "host/platform/terminal/talk.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace {

constexpr int failed = 1;
constexpr int max_quiet_ms = 3'600'000;

struct Options {
    std::string folder;
    std::vector<std::string> send;
    std::string file;
    bool answers = false;
    int quiet_ms = 500;
    bool hex = false;
};

/// Empty if the text is bytes as a scenario has them, else what is wrong with it.
std::string bytes_fault(const std::string& text) {
    std::vector<std::uint8_t> bytes;
    std::string_view rest = text;
    std::string fault = orvanel::take_bytes(rest, bytes);
    if (fault.empty() && !rest.empty()) fault = orvanel::in_quotes(rest) + " is too much";
    return fault;
}

/// Empty if there is such a file, which need not be a plain one.
std::string missing_file(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) return path + ": is a folder";
    return std::filesystem::exists(path, ignored) ? "" : path + ": no such file";
}

std::vector<orvanel::Option> options_into(Options& options) {
    return {
        {.names = "--dir",
         .place = &options.folder,
         .help = "The folder of the running program; without it the one that orvanel42 lives in "
                 "without --dir, or else the one in the user's data folder",
         .value_name = "DIR"},
        {.names = "--send",
         .place = &options.send,
         .help = "Send BYTES: pairs of hexadecimal digits and texts in double quotes, as '1B "
                 "\"DL\"'. May be given several times",
         .value_name = "BYTES",
         .one_each = true,
         .fault = bytes_fault},
        {.names = "--file",
         .place = &options.file,
         .help = "Then have the module open FILE, a picture or commands",
         .value_name = "FILE",
         .fault = missing_file},
        {.names = "--answers",
         .place = &options.answers,
         .help = "Then print what the module sends, and end when it has been quiet for a while"},
        {.names = "--quiet",
         .place = &options.quiet_ms,
         .help = "How long that while is, 500 ms if not given",
         .value_name = "MS",
         .range = {1, max_quiet_ms}},
        {.names = "--hex",
         .place = &options.hex,
         .help = "Print answers as hexadecimal digits, not as text"},
    };
}

constexpr const char* footer =
    "Without --send, --file and --answers it is a terminal: each key that you type goes "
    "to the module, and what the module sends is shown, with \\x1B for what is not "
    "printable, and <key A> for a key that somebody types in the module's window. "
    "Ctrl+C ends it. What comes on standard input from a file or a pipe is sent as it "
    "is, and the program ends when the module is quiet.\nWhile the module has a COM port "
    "open its answers go there, and none come here.\n"
    "Exit status: 0 all said; 1 no module runs there or it has ended, or standard output can't be "
    "written; 2 a wrong command line.";

void tell_error(const std::string& what) {
    orvanel::tell_user("orvanel42-terminal: error: " + what);
}

/// Connects to the module in the folder; without one to that in the programs' own folder, or else
/// in the user's data folder. -1 and `fault` if there is none.
int connect_to_module(std::string& folder, std::string& fault) {
    using namespace orvanel;
    const Deadline end = std::chrono::steady_clock::now() + answer_limit;
    if (!folder.empty()) return connect_to_instance(folder, end, fault);
    folder = own_folder();
    const int connection = connect_to_instance(folder, end, fault);
    std::string ignored;
    return connection >= 0 ? connection : connect_to_instance(data_folder(), end, ignored);
}

int run(int argc, char** argv) {
    using namespace orvanel;
    Options options;
    const CommandLine line{.program = "orvanel42-terminal",
                           .version = ORVANEL_VERSION,
                           .help = "Plays the device at the other end of a running module's line",
                           .options = options_into(options),
                           .footer = footer};
    if (const int status = read_command_line(line, argc, argv); status >= 0)
        return output_is_whole(line.program) ? status : failed;
    Talk talk{};
    for (const std::string& text : options.send) {
        std::string_view rest = text;
        take_bytes(rest, talk.bytes);
    }
    if (!options.file.empty()) talk.file = std::filesystem::absolute(options.file).string();
    if (talk.file.size() > max_name_length) {
        tell_error("the path is too long, " + std::to_string(max_name_length) +
                   " bytes at most: " + talk.file);
        return failed;
    }
    std::string fault;
    talk.connection = connect_to_module(options.folder, fault);
    if (talk.connection < 0) {
        tell_error(fault);
        return failed;
    }
    talk.takes_input = options.send.empty() && options.file.empty() && !options.answers;
    talk.shows_answers = talk.takes_input || options.answers;
    talk.ends_when_quiet = options.answers || isatty(STDIN_FILENO) == 0;
    talk.quiet_ms = options.quiet_ms;
    talk.hex = options.hex;
    if (talk.takes_input && isatty(STDIN_FILENO) != 0)
        std::fputs("What you type goes to the module. Ctrl+C ends.\n", stderr);
    switch (run_talk(talk)) {
    case TalkEnd::done:
        return EXIT_SUCCESS;
    case TalkEnd::module_gone:
        tell_error("the module has ended");
        return failed;
    case TalkEnd::no_output:
        tell_error(stdout_fault());
        return failed;
    }
    return failed;
}

}  // namespace

int main(int argc, char** argv) {
    orvanel::prepare_process();
    try {
        return run(argc, argv);
    } catch (const std::exception& fault) {
        tell_error(fault.what());
        return failed;
    }
}
