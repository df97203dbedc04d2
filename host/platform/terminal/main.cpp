// orvanel42-terminal: the companion of a running module.

#include "base/words.h"
#include "host/platform/instance/instance_client.h"
#include "host/platform/system/process.h"
#include "host/platform/terminal/talk.h"

#include <CLI/CLI.hpp>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

namespace {

constexpr int failed = 1;
constexpr int wrong_command_line = 2;
constexpr int most_quiet_ms = 3'600'000;

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

void add_options(CLI::App& app, Options& options) {
    app.add_option("--dir", options.folder,
                   "The folder of the running program; without it the one that orvanel42 lives in "
                   "without --dir, or else the one in the user's data folder")
        ->option_text("DIR");
    app.add_option("--send", options.send,
                   "Send BYTES: pairs of hexadecimal digits and texts in double quotes, as '1B "
                   "\"DL\"'. May be given several times")
        ->option_text("BYTES")
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->check(bytes_fault);
    app.add_option("--file", options.file, "Then have the module open FILE, a picture or commands")
        ->option_text("FILE")
        ->check(CLI::ExistingFile);
    app.add_flag("--answers", options.answers,
                 "Then print what the module sends, and end when it has been quiet for a while");
    app.add_option("--quiet", options.quiet_ms, "How long that while is, 500 ms if not given")
        ->option_text("MS")
        ->check(CLI::Range(1, most_quiet_ms));
    app.add_flag("--hex", options.hex, "Print answers as hexadecimal digits, not as text");
    app.set_version_flag("--version", "orvanel42-terminal " ORVANEL_VERSION);
    app.footer(
        "Without --send, --file and --answers it is a terminal: each key that you type goes "
        "to the module, and\nwhat the module sends is shown, with \\x1B for what is not "
        "printable, and <key A> for a key that somebody\ntypes in the module's window. "
        "Ctrl+C ends it. What comes on standard input from a file or a pipe is sent\nas it "
        "is, and the program ends when the module is quiet.\nWhile the module has a COM port "
        "open its answers go there, and none come here.");
}

/// Connects to the module in the folder; without one to that in the programs' own folder, or else
/// in the user's data folder. -1 and `fault` if there is none.
int connect_to_module(std::string& folder, std::string& fault) {
    using namespace orvanel;
    if (!folder.empty()) return connect_to_instance(folder, fault);
    folder = own_folder();
    const int connection = connect_to_instance(folder, fault);
    std::string ignored;
    return connection >= 0 ? connection : connect_to_instance(data_folder(), ignored);
}

int run(int argc, char** argv) {
    using namespace orvanel;
    Options options;
    CLI::App app{"Plays the device at the other end of a running module's line",
                 "orvanel42-terminal"};
    add_options(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& fault) {
        return app.exit(fault) == 0 ? EXIT_SUCCESS : wrong_command_line;
    }
    Talk talk{};
    for (const std::string& text : options.send) {
        std::string_view rest = text;
        take_bytes(rest, talk.bytes);
    }
    if (!options.file.empty()) talk.file = std::filesystem::absolute(options.file).string();
    if (talk.file.size() > longest_name) {
        std::fprintf(stderr, "orvanel42-terminal: the path is too long, %zu bytes at most: %s\n",
                     longest_name, talk.file.c_str());
        return failed;
    }
    std::string fault;
    talk.connection = connect_to_module(options.folder, fault);
    if (talk.connection < 0) {
        std::fprintf(stderr, "orvanel42-terminal: %s\n", fault.c_str());
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
        std::fputs("orvanel42-terminal: the module has ended\n", stderr);
        return failed;
    case TalkEnd::no_output:
        std::fputs("orvanel42-terminal: can't write to standard output\n", stderr);
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
        std::fprintf(stderr, "orvanel42-terminal: error: %s\n", fault.what());
        return failed;
    }
}
