#include "firmware/core/ground/backlight.h"

#include "base/bytes.h"
#include "seam/host_calls.h"

#include <algorithm>

namespace orvanel {

constinit std::atomic<std::uint8_t> backlight_brightness{0};
constinit std::atomic<BacklightGoal> backlight_goal{};
constinit std::atomic<BacklightLight> backlight_light{{0, backlight_level_full}};
static_assert(std::atomic<BacklightGoal>::is_always_lock_free);

namespace {

constexpr std::uint8_t full = backlight_full;
constexpr int fade_step = 2;  // percent each fade_step_ms

/// The step from `current` towards `target`, and the level that it shows.
BacklightLight step_towards(std::uint8_t target, std::uint8_t current) {
    if (current < target) {
        const std::uint8_t next = low8(std::min<int>(current + fade_step, target));
        return {next, next == full ? backlight_level_full : next};
    }
    const std::uint8_t next = low8(std::max<int>(current - fade_step, target));
    return {next, next < min_shown_percent ? std::uint8_t{0} : next};
}

}  // namespace

void power_on_backlight() {
    backlight_light.store({full, backlight_level_full});
    backlight_goal.store({full, 0});
    backlight_brightness.store(full);
}

void put_backlight_current(std::uint8_t current) {
    BacklightLight seen = backlight_light.load();
    while (!backlight_light.compare_exchange_weak(seen, {current, seen.backlight_level})) {
    }
}

void tick_fade() {
    if (backlight_light.load().backlight_current != backlight_goal.load().backlight_target)
        start_fade_timer();
}

void tick_backlight_limit() {
    BacklightGoal seen = backlight_goal.load();
    while (seen.backlight_off_timer != 0) {
        const std::uint8_t left = low8(seen.backlight_off_timer - 1);
        const std::uint8_t target = left == 0 ? std::uint8_t{0} : seen.backlight_target;
        if (backlight_goal.compare_exchange_weak(seen, {target, left})) return;
    }
}

void backlight_fade_step() {
    BacklightLight seen = backlight_light.load();
    const std::uint8_t target = backlight_goal.load().backlight_target;
    if (seen.backlight_current == target) {
        stop_fade_timer();
        return;
    }
    // A command or a reset may have moved it meanwhile: then this step is theirs.
    backlight_light.compare_exchange_strong(seen, step_towards(target, seen.backlight_current));
    colours_changed();
}

void set_backlight_level(std::uint8_t level) {
    BacklightLight seen = backlight_light.load();
    while (!backlight_light.compare_exchange_weak(seen, {seen.backlight_current, level})) {
    }
}

void adopt_backlight_level() {
    const std::uint8_t level = backlight_light.load().backlight_level;
    const std::uint8_t percent = level == backlight_level_full ? full : level;
    put_backlight_current(percent);
    backlight_brightness.store(percent);
    BacklightGoal seen = backlight_goal.load();
    while (!backlight_goal.compare_exchange_weak(seen, {percent, seen.backlight_off_timer})) {
    }
}

}  // namespace orvanel
