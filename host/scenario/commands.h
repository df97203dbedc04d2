// commands.h: the commands of the scenario language: one table, one function each.

#pragma once

#include "host/scenario/arguments.h"
#include "host/scenario/named_files.h"

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace orvanel {

constexpr std::size_t max_arguments = 4;

struct ScenarioCommand {
    std::string_view name;
    std::string_view usage;  // the arguments as messages show them
    std::array<Argument, max_arguments> arguments{};
    void (*run)(const Arguments&) = nullptr;
};

/// The port of a `port` that ran before any port was chosen (run_leading_lines, in runner.h), for
/// the program to open in place of that of the settings; none without such a line.
extern std::optional<int> leading_port;

/// All commands, in the order of docs/reference/scenarios.md.
std::span<const ScenarioCommand> scenario_commands();

/// The file that a line of a scenario names, from the folder of scenario_name.
NamedFile file_in_line(std::string_view line);

/// Runs one line of a scenario, which may begin a wait. `is_first` says that no command came before
/// it. Blank lines and comments are none; the result is false for them.
bool run_scenario_line(std::string_view line, bool is_first);

}  // namespace orvanel
