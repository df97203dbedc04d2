// session.h: one scenario on a fresh module in this process, in module time or in real time.

#pragma once

#include <string>

namespace orvanel {

/// Tells on standard error what the user is to know of the image's file
/// (host/program/image_file.h).
void tell_image_notice();

/// Starts the module, with the window in memory, in the chosen time mode. The scenario is open.
/// Empty on success, else why it can't start.
[[nodiscard]] std::string start_session();

/// Runs the scenario `name` from its first line to its end; an empty name, in real time, is none,
/// and a signal the end. The EEPROM image is loaded. The result is the exit status.
int run_session(const std::string& name);

}  // namespace orvanel
