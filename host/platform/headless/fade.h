// fade.h: the steps of the backlight's fade, in module time and in real time.

#pragma once

#include "firmware/core/ground/backlight.h"

#include <cstdint>

namespace orvanel {

/// When the next step of the backlight's fade is due, in the time of clock_us; `never` (waits.h)
/// while it doesn't run.
constexpr std::int64_t fade_step_us = fade_step_ms * 1000;
extern std::int64_t next_fade_us;
void serve_fade_step();

}  // namespace orvanel
