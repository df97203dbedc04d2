// program_life.h: what every program with a window, on a screen or in memory, does around the run
// of the module. Main thread.
//
// The order of a start: settings and image, prepare_view (host/skin/view.h), the window is made,
// dress_window, it is shown, open_start_port
// (host/platform/shared/start_port.h), the timers run, the threads start, furnish_window.

#pragma once

#include <string>

namespace orvanel {

/// Gives a window that has just been made its title, its shape and the arrow.
void dress_window();

/// Opens the panel of the ports if it was open last time, marks the menu, opens `file` unless that
/// is empty, and brings the window on top if it is to stay there.
void furnish_window(const std::string& file);

}  // namespace orvanel
