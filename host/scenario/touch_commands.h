// touch_commands.h: the commands that touch by meaning: tap, hold, choose and drag. They go the way
// of `touch`, by put_finger, and last until the module has seen each of the finger's states.

#pragma once

#include "host/scenario/arguments.h"

namespace orvanel {

void tap_command(const Arguments& a);
void hold_command(const Arguments& a);
void choose_command(const Arguments& a);
void drag_command(const Arguments& a);

}  // namespace orvanel
