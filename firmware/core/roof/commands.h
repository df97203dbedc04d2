// commands.h: the one table of the command language, and the dispatch that runs on it.

#pragma once

#include "firmware/core/read/read.h"

#include <array>
#include <cstdint>
#include <string>

namespace orvanel {

/// One command. `op` is 0 for a command without an op letter.
struct Command {
    char group;
    char op;
    std::array<Read, max_reads> reads;
    void (*run)();
    const char* role;
};

/// Runs the command behind a lead-in: reads its letters and parameters. A group that the table
/// doesn't have goes to the terminal as a character; an undefined op swallows its two letters and
/// nothing else.
void run_command();

/// The table as the Markdown page docs/reference/commands.md.
std::string command_reference();

}  // namespace orvanel
