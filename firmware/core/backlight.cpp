#include "firmware/core/backlight.h"

#include "firmware/core/read.h"
#include "firmware/core/tick_counter.h"
#include "host/host_calls.h"

#include <algorithm>

namespace orvanel {

constinit std::atomic<std::int32_t> backlight_brightness{0};
constinit std::atomic<std::int32_t> backlight_target{0};
constinit std::atomic<std::int32_t> backlight_current{0};
constinit std::atomic<std::uint8_t> backlight_level{1};
constinit std::atomic<std::uint8_t> backlight_off_timer{0};

namespace {

constexpr int full = 100;
constexpr int fade_step = 2;            // percent each 20 ms
constexpr std::uint8_t level_full = 1;  // how backlight_level says full

/// backlight_level for a fade that has come to `current`, going up or down.
std::uint8_t level_of(int current, bool up) {
    if (up) return current == full ? level_full : static_cast<std::uint8_t>(current);
    return current < 3 ? 0 : static_cast<std::uint8_t>(current);
}

}  // namespace

void power_on_backlight() {
    backlight_level.store(level_full);
    backlight_off_timer.store(0);
    backlight_brightness.store(full);
    backlight_target.store(full);
    backlight_current.store(full);
}

void tick_fade() {
    if (backlight_current.load() != backlight_target.load()) start_fade_timer();
}

void tick_backlight_limit() {
    if (count_down(backlight_off_timer)) backlight_target.store(0);
}

void backlight_fade_step() {
    std::int32_t current = backlight_current.load();
    const std::int32_t target = backlight_target.load();
    if (current == target) {
        stop_fade_timer();
        return;
    }
    const bool up = current < target;
    const std::int32_t next =
        up ? std::min(current + fade_step, target) : std::max(current - fade_step, target);
    // A command or a reset may have moved it meanwhile: then this step is theirs.
    if (backlight_current.compare_exchange_strong(current, next))
        backlight_level.store(level_of(next, up));
    colours_changed();
}

void set_brightness() {
    // One step from the end, so that off and full come without a visible fade.
    constexpr int dark_at_once = 254, full_at_once = 255;
    const int p = params[0];
    if (p == dark_at_once) backlight_current.store(1);
    if (p == full_at_once) backlight_current.store(full - 1);
    backlight_brightness.store(p == dark_at_once ? 0 : std::min(p, full));
    backlight_off_timer.store(0);
    backlight_target.store(backlight_brightness.load());
}

void switch_backlight() {
    constexpr std::uint8_t on = 1;
    const std::uint8_t b = read_byte();  // raw under both lead-ins
    backlight_off_timer.store(b > on ? b : 0);
    backlight_target.store(b == 0 ? 0 : backlight_brightness.load());
}

}  // namespace orvanel
