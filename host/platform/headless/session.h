// session.h: one scenario on a fresh module in this process, in module time or in real time.

#pragma once

#include "host/scenario/trace.h"

#include <cstdint>
#include <string>

namespace orvanel {

/// Real time in place of module time. Set before run_session, then left alone.
extern bool real_time;

/// The file that the EEPROM image goes to at the end, if it was programmed; empty for none. Set
/// before run_session.
extern std::string image_save_path;

/// The text of `--serial`, empty for none. Set before run_session.
extern std::string serial_option;

/// Opens the port that is to be open from the start, and prints the name that its peer has to know.
/// The result is empty on success, else why the one of serial_option can't be opened; that of the
/// settings may fail, which is told. Before the firmware runs.
std::string open_first_port();

/// How the module is listened to. Set before run_session.
extern TraceOptions trace_options;

/// When the next step of the backlight's fade is due, in the time of clock_us; `never` (waits.h)
/// while it doesn't run.
constexpr std::int64_t fade_step_us = 20'000;
extern std::int64_t next_fade_us;
void serve_fade_step();

/// Takes SIGINT and SIGTERM from now on; told_to_end says whether one has come, end_signals_fd is
/// readable from then on. Again after a fork, so that parent and child have each their own.
void take_end_signals();
bool told_to_end();
int end_signals_fd();

/// Tells on standard error what the user is to know of the image's file (host/image_file.h).
void tell_image_notice();

/// Runs the scenario `name` from its first line to its end; an empty name, in real time, is none,
/// and a signal the end. The EEPROM image is loaded. The result
/// is the exit status.
int run_session(const std::string& name);

}  // namespace orvanel
