#include "base/command_line.h"

#include "base/visible.h"

// It takes longer to compile than anything else here: no other file includes it, and this one is
// built without optimisation.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <iostream>
#include <sstream>

namespace orvanel {

namespace {

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
        if (!option.one_of.empty()) added->check(CLI::IsMember(option.one_of));
        return added;
    }
    CLI::Option* operator()(std::string* text) const {
        return app.add_option(option.names, *text, option.help);
    }
    CLI::Option* operator()(std::vector<std::string>* texts) const {
        CLI::Option* added = app.add_option(option.names, *texts, option.help);
        if (option.one_each)
            added->expected(1)->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
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

/// Says what has ended the reading, a fault with the user's words in it or the help, and gives the
/// status.
int told(const CLI::App& app, const CLI::Error& end) {
    std::ostringstream fault;
    const int status = app.exit(end, std::cout, fault);
    std::fputs(visible_lines(fault.str()).c_str(), stderr);
    return status == 0 ? 0 : wrong_command_line;
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
        return told(app, fault);
    }
    if (command != nullptr && !line.commands.empty())
        *command = app.get_subcommands().front()->get_name();
    return -1;
}

int refuse_option(const std::string& option, const std::string& fault) {
    CLI::App app;
    return told(app, CLI::ValidationError(option, fault));
}

}  // namespace orvanel
