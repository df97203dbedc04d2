// window.h: the window of the desktop program, with the module running behind it. Qt's main thread
// is the host's main thread.

#pragma once

#include <string>

namespace orvanel {

/// Takes the wakes that the window listens to. SIGINT, SIGTERM and SIGHUP end the event loop from
/// here on, as closing the window does, until close_end_signals (host/platform/system/wake.h): one
/// that comes after the loop does nothing. False if the system lacks a descriptor.
[[nodiscard]] bool prepare_window();

/// Opens the window, starts the module, and feeds it `file` unless that is empty. A QApplication
/// exists, prepare_window has run, and settings and EEPROM image stand. `serial` is the text of
/// `--serial`, empty for none. Empty on success, else why there is no view to show.
[[nodiscard]] std::string open_window(const std::string& file, const std::string& serial = {});

/// One of these signals has come: nobody is there to answer a message.
extern bool ended_by_signal;

/// Ends the module in order and then the window. The event loop has ended.
void close_window();

}  // namespace orvanel
