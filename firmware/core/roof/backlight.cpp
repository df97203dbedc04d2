#include "firmware/core/roof/backlight.h"

#include "base/bytes.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "seam/host_calls.h"

#include <algorithm>

namespace orvanel {

constinit std::atomic<std::uint8_t> backlight_brightness{0};
constinit std::atomic<BacklightGoal> backlight_goal{};
constinit std::atomic<BacklightLight> backlight_light{{0, 1}};
static_assert(std::atomic<BacklightGoal>::is_always_lock_free);

namespace {

constexpr std::uint8_t full = 100;
constexpr int fade_step = 2;            // percent each 20 ms
constexpr std::uint8_t level_full = 1;  // how a level says full

/// The step from `current` towards `target`, and the level that it shows.
BacklightLight step_towards(std::uint8_t target, std::uint8_t current) {
    if (current < target) {
        const std::uint8_t next = low8(std::min<int>(current + fade_step, target));
        return {next, next == full ? level_full : next};
    }
    const std::uint8_t next = low8(std::max<int>(current - fade_step, target));
    return {next, next < 3 ? std::uint8_t{0} : next};
}

/// Changes where the fade stands, and not what shows.
void put_current(std::uint8_t current) {
    BacklightLight seen = backlight_light.load();
    while (!backlight_light.compare_exchange_weak(seen, {current, seen.level})) {
    }
}

}  // namespace

void power_on_backlight() {
    backlight_light.store({full, level_full});
    backlight_goal.store({full, 0});
    backlight_brightness.store(full);
}

void tick_fade() {
    if (backlight_light.load().current != backlight_goal.load().target) start_fade_timer();
}

void tick_backlight_limit() {
    BacklightGoal seen = backlight_goal.load();
    while (seen.off_timer != 0) {
        const std::uint8_t left = low8(seen.off_timer - 1);
        const std::uint8_t target = left == 0 ? std::uint8_t{0} : seen.target;
        if (backlight_goal.compare_exchange_weak(seen, {target, left})) return;
    }
}

void backlight_fade_step() {
    BacklightLight seen = backlight_light.load();
    const std::uint8_t target = backlight_goal.load().target;
    if (seen.current == target) {
        stop_fade_timer();
        return;
    }
    // A command or a reset may have moved it meanwhile: then this step is theirs.
    backlight_light.compare_exchange_strong(seen, step_towards(target, seen.current));
    colours_changed();
}

void set_backlight_level(std::uint8_t level) {
    BacklightLight seen = backlight_light.load();
    while (!backlight_light.compare_exchange_weak(seen, {seen.current, level})) {
    }
}

void adopt_backlight_level() {
    const std::uint8_t level = backlight_light.load().level;
    const std::uint8_t percent = level == level_full ? full : level;
    put_current(percent);
    backlight_brightness.store(percent);
    BacklightGoal seen = backlight_goal.load();
    while (!backlight_goal.compare_exchange_weak(seen, {percent, seen.off_timer})) {
    }
}

void set_brightness() {
    // One step from the end, so that off and full come without a visible fade.
    constexpr std::uint8_t dark_at_once = 254, full_at_once = 255;
    const std::uint8_t p = params[0];
    if (p == dark_at_once) put_current(1);
    if (p == full_at_once) put_current(full - 1);
    if (p > full && p < dark_at_once) remark(Remark::clamped, p, full);
    const std::uint8_t brightness = p == dark_at_once ? std::uint8_t{0} : std::min(p, full);
    backlight_brightness.store(brightness);
    backlight_goal.store({brightness, 0});
}

void switch_backlight() {
    constexpr std::uint8_t off = 0, on = 1;
    const std::uint8_t b = read_byte();  // raw under both lead-ins
    const std::uint8_t target = b == off ? std::uint8_t{0} : backlight_brightness.load();
    backlight_goal.store({target, b == on ? std::uint8_t{0} : b});
}

}  // namespace orvanel
