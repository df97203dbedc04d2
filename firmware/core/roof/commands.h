// commands.h: the dispatch of the command language (firmware/core/language/commands.h).

#pragma once

namespace orvanel {

/// Runs the command after a lead-in: reads its letters and parameters. A group that the table
/// doesn't have goes to the terminal as a character; an undefined op swallows its two letters and
/// nothing else.
void run_command();

}  // namespace orvanel
