// runner.h: a scenario from its first line to its end: reads it line by line as it is needed, runs
// the commands, waits where one waits. The program that owns the clock calls it from there.

#pragma once

#include <cstdint>
#include <string>

namespace orvanel {

/// Opens a scenario file, `-` for standard input. The name stays valid until the scenario is
/// closed. An empty one is for a session in real time without a scenario, which goes on until it is
/// stopped. The result is empty on success, else what went wrong.
std::string open_scenario(const std::string& name);

void close_scenario();

/// Runs the lines that come before the first command but `protocol` and `port`, as far as they can
/// be read without a wait. For real time, where a peer may send as soon as the line is open.
void run_leading_lines();

/// The end of a move of the clock. The first one runs the first commands; later ones test what the
/// scenario waits for and run what comes behind it.
void scenario_move_ended();

/// The time at which scenario_due is to be called; `never` (waits.h) if at none.
std::int64_t scenario_due_us();

/// That time has come, in the middle of a move or at its end.
void scenario_due();

/// True while the scenario can go on as soon as there is more to read from scenario_input_fd. Then
/// scenario_input_ready reads it and runs the commands.
bool scenario_wants_input();
int scenario_input_fd();
void scenario_input_ready();

/// Ends the scenario before its end, since the program is told to. That is a fault of a scenario
/// file, but not of standard input, which ends wherever the other side stops.
void stop_scenario();

}  // namespace orvanel
