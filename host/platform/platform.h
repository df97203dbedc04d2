// platform.h: the seam below which the systems differ: clock, sleeping, waking, painting. Free
// functions in our words; each program links exactly one implementation (desktop/, headless/, or
// the fake of the tests).

#pragma once

#include <string_view>

namespace orvanel {

/// A rectangle of window pixels; right and bottom are exclusive.
struct PixelRect {
    int left, top, right, bottom;
};

/// Sleeps on the clock of this platform. Module time moves by `ms` and serves what falls due;
/// real time may return early once shutdown_requested is set.
void sleep_ms(int ms);

/// As sleep_ms, but in real time it ends early when wake_firmware is called: the firmware has
/// nothing to do until a byte comes.
void sleep_until_input(int ms);

/// Ends a sleep_until_input that is running, or the next one. Called from any thread behind a put
/// into rx_pipe.
void wake_firmware();

/// What one byte costs that the read layer takes from a macro or from rx_pipe: 10 us of module
/// time, nothing in real time.
void spend_byte_time();

/// True on the host's main thread, where painting happens; always true in module time.
bool on_main_thread();

/// Has the main thread call serve_main_requests (host/main_requests.h) soon. Called from any
/// thread.
void wake_main();

/// Paints this part of the window before it returns. Main thread only.
void paint_window(PixelRect rect);

/// From now on the main thread runs backlight_fade_step (firmware/core/backlight.h) every 20 ms,
/// for the first time in 20 ms; or no more. Main thread only.
void set_fade_timer(bool runs);

/// Opens a message box and returns at once. message_closed (host/main_requests.h) is called when
/// the user has closed it, which may be before this returns. Main thread only.
void open_message_box(std::string_view caption, std::string_view text);

/// The system's simple beep. Main thread only.
void sound_beep();

}  // namespace orvanel
