// command_line.h: the command lines of the programs. A program says in records what it takes;
// reading, --help, --version and what is said of a wrong line are here, the same for all.

#pragma once

#include <functional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace orvanel {

/// Takes one value; the result is what is wrong with it, empty if nothing.
using TakeValue = std::function<std::string(const std::string&)>;

/// Where a value goes; a bool is that of a flag, which has none. What isn't given stays as it is.
using ValuePlace = std::variant<bool*, int*, std::string*, std::vector<std::string>*, TakeValue>;

struct Option {
    const char* names;  // "-q,--quiet"; "FILE" is a word without a dash, found by its place
    ValuePlace place;
    const char* help;
    const char* value_name = nullptr;  // in the help, after the names; null: as its kind calls it
    const char* without = nullptr;     // of a text: its value where the name stands alone; another
                                       // one follows it after `=` only
    bool required = false;
    bool one_each = false;                // each value of a list has the option's name before it
    std::pair<int, int> range{0, 0};      // of a number, both included; equal: any
    std::vector<int> one_of{};            // the numbers to choose from; empty: any
    TakeValue fault{};                    // looks at a value, and takes nothing
    std::vector<const char*> excludes{};  // names of options above this one
    std::vector<const char*> needs{};
};

struct Command {
    const char* name;
    const char* help;
    std::vector<Option> options;
};

struct CommandLine {
    const char* program;
    const char* version;
    const char* help;
    std::vector<Option> options;
    std::vector<Command> commands{};  // one of them has to be given, if there are any
    const char* footer = "";          // of the help, which breaks its long lines: the exit statuses
};

constexpr int wrong_command_line = 2;  // exit status

/// Reads the command line into the places of its options; `command` gets the name of the command
/// that was given. Below 0 to go on, else the exit status, with everything said: what is wrong on
/// standard error; help and version on standard output, where the caller looks for faults
/// (output_is_whole).
int read_command_line(const CommandLine& line, int argc, char** argv,
                      std::string* command = nullptr);

/// Says on standard error in the program's name what is wrong with an option, or with several
/// together, as read_command_line does. The result is the exit status.
int refuse_option(const std::string& program, const std::string& option, const std::string& fault);

}  // namespace orvanel
