// window_timer.h: what the host's main thread does every 100 ms.

#pragma once

#include "firmware/store/roof/timers.h"

namespace orvanel {

constexpr int window_timer_ms = tick_ms;

/// Judges the mouse pointer if the touch table has changed; drains the feed, which keeps the
/// automatic macro stopped while it lasts; then ticks the firmware.
void window_timer();

}  // namespace orvanel
