// raw_mode.h: the user's terminal, so that each key comes at once and as it is.

#pragma once

namespace orvanel {

/// Switches standard input to single keys without echo, if it is a terminal; but Ctrl+C still
/// interrupts. However the program exits, the terminal is as before.
void begin_raw_mode();
void end_raw_mode();

}  // namespace orvanel
