// tracking.h: from the finger to what it does. The command loop polls the finger between two
// commands, turns it into press, drag and release against the table of touch areas, and does what
// the area under it is there for.

#pragma once

namespace orvanel {

/// Touch is on. While it is off a change stays flagged, so that turning it on finds the present
/// state.
extern bool touch_enabled;

/// A press on a key, a switch or an opener sounds.
extern bool touch_beep;

/// Acts on a new sample, if there is one and touch is on. May start macros. Leaves draw_area
/// changed.
void poll_touch();

/// What the area under the finger does on event_kind: prev_area's for a release, cur_area's
/// otherwise. While a touch list is open only openers and the list react.
void handle_touch_event();

/// Power-on: touch and tone on. The finger itself and its last places outlive a reset.
void power_on_tracking();

// Handlers.
void enable_touch();
void enable_touch_beep();

}  // namespace orvanel
