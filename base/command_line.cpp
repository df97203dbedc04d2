#include "base/command_line.h"

#include "base/nearest.h"
#include "base/standard_output.h"
#include "base/visible.h"

// It takes longer to compile than anything else here: no other file includes it, and this one is
// built without optimisation.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string_view>

namespace orvanel {

namespace {

bool is_one_of(const std::vector<int>& choice, const std::string& text) {
    return std::any_of(choice.begin(), choice.end(),
                       [&text](int number) { return std::to_string(number) == text; });
}

std::string no_choice(const std::vector<int>& choice, const std::string& text) {
    std::string fault = "'" + text + "' is none of";
    for (std::size_t i = 0; i < choice.size(); ++i)
        fault += (i == 0 ? " " : ", ") + std::to_string(choice[i]);
    return fault;
}

struct AddOption {
    CLI::App& app;
    const Option& option;

    CLI::Option* operator()(bool* flag) const {
        return app.add_flag(option.names, *flag, option.help);
    }
    CLI::Option* operator()(int* number) const {
        CLI::Option* added = app.add_option(option.names, *number, option.help);
        if (option.range.first < option.range.second)
            added->check(CLI::Range(option.range.first, option.range.second));
        if (!option.one_of.empty())
            added->check([choice = option.one_of](const std::string& text) {
                return is_one_of(choice, text) ? std::string() : no_choice(choice, text);
            });
        return added;
    }
    CLI::Option* operator()(std::string* text) const {
        if (option.without == nullptr) return app.add_option(option.names, *text, option.help);
        const std::string names = std::string(option.names) + '{' + option.without + '}';
        return app.add_flag(names, *text, option.help);
    }
    CLI::Option* operator()(std::vector<std::string>* texts) const {
        CLI::Option* added = app.add_option(option.names, *texts, option.help);
        if (option.one_each)
            added->expected(1)->allow_extra_args(false)->multi_option_policy(
                CLI::MultiOptionPolicy::TakeAll);
        return added;
    }
    CLI::Option* operator()(const TakeValue& take) const {
        const auto checked = [name = std::string(option.names), take](const std::string& text) {
            if (const std::string fault = take(text); !fault.empty())
                throw CLI::ValidationError(name, fault);
        };
        return app.add_option_function<std::string>(option.names, checked, option.help);
    }
};

void add_options(CLI::App& app, const std::vector<Option>& options) {
    for (const Option& option : options) {
        CLI::Option* added = std::visit(AddOption{app, option}, option.place);
        if (option.value_name != nullptr) added->option_text(option.value_name);
        if (option.fault) added->check(option.fault);
        added->required(option.required);
        for (const char* other : option.excludes)
            added->excludes(app.get_option(other));
        for (const char* other : option.needs)
            added->needs(app.get_option(other));
    }
}

/// The help with its long lines broken at spaces; the text of an option stays in its column.
std::string wrapped(const std::string& help, std::size_t option_column) {
    constexpr std::size_t max_columns = 80;
    std::string all;
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line); all += line + '\n') {
        const std::size_t indent = line.starts_with(' ') ? option_column : 0;
        while (line.size() > max_columns) {
            const std::size_t space = line.rfind(' ', max_columns);
            if (space == std::string::npos || space <= indent) break;
            all += line.substr(0, space) + '\n';
            line.replace(0, space + 1, indent, ' ');
        }
    }
    return all;
}

bool looks_like_option(std::string_view word) { return word.size() > 1 && word.starts_with('-'); }

/// `command` is the one that was given before the word, or null.
std::string no_option(const CommandLine& line, const CLI::App& app, const CLI::App* command,
                      const std::string& word) {
    std::string fault = "'" + word.substr(0, word.find('=')) + "' is no option";
    if (command != nullptr)
        fault += " of " + command->get_name();
    else if (!line.commands.empty())
        fault += " before the subcommand";
    std::vector<std::string_view> names;
    for (const CLI::Option* option : (command == nullptr ? app : *command).get_options())
        names.insert(names.end(), option->get_lnames().begin(), option->get_lnames().end());
    const std::size_t dashes = std::min(word.find_first_not_of('-'), word.size());
    const std::string_view nearest =
        nearest_name(std::string_view(word).substr(dashes, word.find('=') - dashes), names);
    return nearest.empty() ? fault : fault + "; is it '--" + std::string(nearest) + "'?";
}

std::string no_command(const CommandLine& line, const std::string& word) {
    std::vector<std::string_view> names;
    for (const Command& command : line.commands)
        names.emplace_back(command.name);
    return "'" + word + "' is no subcommand" + is_it(word, names);
}

/// What is wrong with the line. CLI11 looks at the values before it looks at what it doesn't know,
/// but a wrong value often only follows from that: in `--seral pty` pty is taken for a file.
std::string fault_in(const CLI::App& app, const CommandLine& line, const CLI::Error& found) {
    const std::vector<CLI::App*> given = app.get_subcommands();
    const bool lacks_command = !line.commands.empty() && given.empty();
    const std::vector<std::string> before = app.remaining();
    std::vector<std::string> unknown = app.remaining(true);
    // What comes after it is no option, whatever it looks like.
    unknown.erase(std::find(unknown.begin(), unknown.end(), "--"), unknown.end());
    const auto word = lacks_command
                          ? unknown.begin()
                          : std::find_if(unknown.begin(), unknown.end(), looks_like_option);
    if (word == unknown.end())
        return unknown.empty() ? found.what()
                               : "'" + unknown.front() + "' is one argument too many";
    const bool is_before = std::count(before.begin(), before.end(), *word) > 0;
    if (looks_like_option(*word))
        return no_option(line, app, is_before || given.empty() ? nullptr : given.front(), *word);
    return no_command(line, *word);
}

/// `call` is the program, with its command if one was given: what has a help of its own.
int refuse(const std::string& program, const std::string& fault, const std::string& call) {
    tell_user(program + ": error: " + fault + "\nRun " + call + " --help for what it takes.");
    return wrong_command_line;
}

/// Says what has ended the reading, a fault or the help, and gives the status.
int say_end(const CLI::App& app, const CommandLine& line, const CLI::Error& end) {
    if (end.get_exit_code() != 0) {
        std::string call = line.program;
        for (const CLI::App* command : app.get_subcommands())
            call += " " + command->get_name();
        return refuse(line.program, fault_in(app, line, end), call);
    }
    std::ostringstream text;
    app.exit(end, text, text);
    write_stdout(wrapped(text.str(), app.get_formatter()->get_column_width()));
    return 0;
}

}  // namespace

int read_command_line(const CommandLine& line, int argc, char** argv, std::string* command) {
    CLI::App app{line.help, line.program};
    add_options(app, line.options);
    app.set_version_flag("--version", std::string(line.program) + " " + line.version);
    app.footer(line.footer);
    for (const Command& each : line.commands)
        add_options(*app.add_subcommand(each.name, each.help), each.options);
    if (!line.commands.empty()) app.require_subcommand(1);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& fault) {
        return say_end(app, line, fault);
    }
    if (command != nullptr && !line.commands.empty())
        *command = app.get_subcommands().front()->get_name();
    return -1;
}

int refuse_option(const std::string& program, const std::string& option, const std::string& fault) {
    return refuse(program, option + ": " + fault, program);
}

}  // namespace orvanel
