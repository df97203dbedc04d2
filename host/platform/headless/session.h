// session.h: one scenario on a fresh module in this process, in module time or in real time.

#pragma once

#include "host/trace/trace_writer.h"

#include <string>

namespace orvanel {

/// Real time in place of module time. Set before run_session, then left alone.
extern bool real_time;

/// The file that the EEPROM image goes to at the end, if it was programmed; empty for none. Set
/// before run_session.
extern std::string image_save_path;

/// How the module is listened to. Set before run_session.
extern TraceOptions trace_options;

/// Tells on standard error what the user is to know of the image's file
/// (host/program/image_file.h).
void tell_image_notice();

/// Runs the scenario `name` from its first line to its end; an empty name, in real time, is none,
/// and a signal the end. The EEPROM image is loaded. The result is the exit status.
int run_session(const std::string& name);

}  // namespace orvanel
