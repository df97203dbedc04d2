// backlight.h: the backlight's level and its fade. The commands (firmware/core/roof/device.h) set
// where it is to go; the tick starts a 20 ms timer on the host's main thread, which takes it there
// in steps of 2 percent.

#pragma once

#include <atomic>
#include <cstdint>

namespace orvanel {

/// Percent that ESC Y H chose, 0..100.
extern std::atomic<std::uint8_t> backlight_brightness;

/// Where the fade runs to, `backlight_target` in percent, 0 while the light is off; and
/// `backlight_off_timer`, the ticks until it goes off, 0 for no limit. The commands set them, the
/// tick ends them: one word.
struct alignas(2) BacklightGoal {  // its size: clang's atomics need that to work inline
    std::uint8_t backlight_target, backlight_off_timer;
};
extern std::atomic<BacklightGoal> backlight_goal;

/// Where the fade has come, `backlight_current` in percent; and `backlight_level`, what the colour
/// model shows: 0 dark, backlight_level_full, else percent. A fade up to 1 percent shows as full.
/// Commands, reset and fade set them: one word.
struct alignas(2) BacklightLight {
    std::uint8_t backlight_current, backlight_level;
};
extern std::atomic<BacklightLight> backlight_light;

/// How a level says full; and what is full in percent.
constexpr std::uint8_t backlight_level_full = 1;
constexpr std::uint8_t backlight_full = 100;

/// The time between two steps of the fade.
constexpr int fade_step_ms = 20;

/// Percent below which the light shows as dark, as it goes down or as a user sets it.
constexpr std::uint8_t min_shown_percent = 3;

/// Where the fade stands, in percent; what shows stays. From any thread.
void put_backlight_current(std::uint8_t current);

/// The tick's two shares: starts the fade timer if there is a way to go and it doesn't run; counts
/// down the time limit.
void tick_fade();
void tick_backlight_limit();

/// One step of the fade timer, on the host's main thread each 20 ms: stops the timer when the
/// target is reached, else steps and shows the new colours.
void backlight_fade_step();

/// The user sets what shows by hand, as `backlight_level`; where the fade stands stays. From
/// the main thread.
void set_backlight_level(std::uint8_t level);

/// What shows becomes the brightness, and the fade has come and goes there. A time limit runs on.
/// From the main thread.
void adopt_backlight_level();

/// Power-on: full. The colours on the glass change with the next step or colour action only.
void power_on_backlight();

}  // namespace orvanel
