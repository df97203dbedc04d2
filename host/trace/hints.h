// hints.h: what is legal in a step and probably not meant, told by its bytes and by the state that
// the module has after it.

#pragma once

#include "host/trace/step.h"

namespace orvanel {

/// For a command, at its end.
void add_command_hints(Step& step);

/// For a stretch of text for the terminal.
void add_text_hints(Step& step);

/// For a press of the finger at a dot, while the module handles it.
std::vector<Finding> findings_on_press(int x, int y);

/// Whether the command has a mistake that makes what follows text.
bool loses_step(const Step& step);

}  // namespace orvanel
