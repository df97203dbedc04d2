// host_calls.h: the few calls upward from the module into the host around it.

#pragma once

#include <string_view>

namespace orvanel {

/// Paints the dots x1..x2, y1..y2 of the display, all inclusive and on the glass, in the present
/// view and flash phase. Returns when they have been painted, or at once when the host has stopped
/// painting for good. From firmware_thread or the host's main thread.
void repaint_rect(int x1, int y1, int x2, int y2);

/// The backlight has moved: shows the display in its new colours. Main thread.
void colours_changed();

/// Starts the 20 ms timer that runs backlight_fade_step, unless it runs; stops it. Main thread.
void start_fade_timer();
void stop_fade_timer();

/// Shows a message box and returns when the user has closed it, or when the program ends.
void show_message(std::string_view caption, std::string_view text);

/// The simple beep, if the user wants to hear it.
void beep();

/// Shows ports_shown on the output ports panel, if that is open.
void show_ports();

}  // namespace orvanel
