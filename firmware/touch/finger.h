// finger.h: where the finger is, as the host writes it, and the event that the module makes of it.
// What follows from an event is in tracking.h.

#pragma once

#include <atomic>
#include <cstdint>

namespace orvanel {

/// Puts the finger on dot x, y of the glass (0..239, 0..127), and takes it off. From the host's
/// main thread; only the newest state is seen.
void put_finger(int x, int y);
void lift_finger();

/// Whether the finger has changed since take_finger_sample.
bool finger_changed();

/// Whether the host has the finger on the glass, seen or not. From the host's main thread.
bool finger_is_down();

/// The finger as the host last wrote it: x + 1 and y + 1, both 0 when it is up.
struct FingerSample {
    int x, y;
};
FingerSample take_finger_sample();

/// Drops a change; the finger stays where it is.
void drop_finger_change();

/// The finger has to be lifted before anything reacts again.
extern bool wait_release;

enum class TouchEvent : std::uint8_t { press = 1, drag = 2, release = 3 };
extern TouchEvent event_kind;

/// The finger in this sample, in dots of the glass; 0, 0 in a release.
extern std::int32_t cur_x;
extern std::uint8_t cur_y;

}  // namespace orvanel
