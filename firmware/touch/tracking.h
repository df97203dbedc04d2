// tracking.h: the finger. The host writes where it is; the command loop polls that between two
// commands, turns it into press, drag and release against the table of touch areas, and does what
// the area under it is there for.

#pragma once

#include <atomic>
#include <cstdint>

namespace orvanel {

/// Puts the finger on dot x, y of the glass (0..239, 0..127), and takes it off. From the host's
/// main thread; only the newest state is seen.
void put_finger(int x, int y);
void lift_finger();

/// Touch is on. While it is off a change stays flagged, so that turning it on finds the present
/// state.
extern bool touch_enabled;

/// The finger has to be lifted before anything reacts again.
extern bool wait_release;

/// A press on a key, a switch or an opener sounds.
extern bool touch_beep;

enum class TouchEvent : std::uint8_t { press = 1, drag = 2, release = 3 };
extern TouchEvent event_kind;

/// The finger in this sample, in dots of the glass; 0, 0 in a release.
extern std::int32_t cur_x;
extern std::uint8_t cur_y;

/// Acts on a new sample, if there is one and touch is on. May start macros. Leaves draw_area
/// changed.
void poll_touch();

/// What the area under the finger does on event_kind: prev_area's for a release, cur_area's
/// otherwise. While a touch list is open only openers and the list react.
void handle_touch_event();

/// Starts macro `code` of a table, which ends an automatic one. False if there is none to start.
bool start_macro_by_touch(std::uint16_t table, std::uint8_t code);

/// Starts the touch macro `code`, which ends an automatic macro; sends the code as an answer if
/// there is none.
void fire_touch_code(std::uint8_t code);

/// Power-on: touch and tone on. The finger itself and its last places outlive a reset.
void power_on_tracking();

// Handlers.
void enable_touch();
void enable_touch_beep();

}  // namespace orvanel
