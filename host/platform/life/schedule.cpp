#include "host/platform/life/schedule.h"

#include "firmware/core/ground/backlight.h"
#include "host/window/roof/window_timer.h"
#include "link/roof/link_thread.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace orvanel {

constinit std::int64_t next_due_us = never;

namespace {

constexpr std::int64_t us_per_ms = 1000;
constexpr int link_turn_ms = 5;

struct Recurring {
    std::int64_t period_us;
    void (*serve)();
};

// In the order of Due.
constexpr std::array<Recurring, 3> all_recurring{{
    {window_timer_ms * us_per_ms, window_timer},
    {fade_step_ms * us_per_ms, backlight_fade_step},
    {link_turn_ms * us_per_ms, [] { link_turn(); }},
}};

constinit std::array<std::int64_t, all_recurring.size()> due_us{never, never, never};

constexpr std::size_t row_of(Due due) { return static_cast<std::size_t>(due); }

void set_due(Due due, std::int64_t at_us) {
    due_us[row_of(due)] = at_us;
    next_due_us = *std::ranges::min_element(due_us);
}

/// The first time after `now_us` that is a whole number of periods after `due`.
constexpr std::int64_t due_after(std::int64_t due, std::int64_t period_us, std::int64_t now_us) {
    return due + ((now_us - due) / period_us + 1) * period_us;
}
static_assert(due_after(100, 100, 100) == 200 && due_after(100, 100, 350) == 400);

}  // namespace

void start_schedule(std::int64_t now_us, LinkRuns link) {
    const auto first = [&](Due due) { return now_us + all_recurring[row_of(due)].period_us; };
    set_due(Due::window_timer, first(Due::window_timer));
    set_due(Due::fade_step, never);
    set_due(Due::link_turn, link == LinkRuns::here ? first(Due::link_turn) : never);
}

void schedule_fade(bool runs, std::int64_t now_us) {
    set_due(Due::fade_step,
            runs ? now_us + all_recurring[row_of(Due::fade_step)].period_us : never);
}

Due serve_due(std::int64_t now_us) {
    // Of equal times the first.
    const auto row = static_cast<std::size_t>(std::ranges::min_element(due_us) - due_us.begin());
    const auto due = static_cast<Due>(row);
    // Before it is served: a step of the fade may be the last one.
    set_due(due, due_after(due_us[row], all_recurring[row].period_us, now_us));
    all_recurring[row].serve();
    return due;
}

}  // namespace orvanel
