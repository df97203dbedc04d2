#include "host/platform/headless/module_time.h"

#include "firmware/core/ground/requests.h"
#include "firmware/core/roof/loop.h"
#include "host/platform/headless/end_signals.h"
#include "host/platform/headless/fade.h"
#include "host/scenario/runner.h"
#include "host/window/roof/window_timer.h"
#include "link/roof/link_thread.h"

#include <algorithm>

namespace orvanel {

namespace {

constexpr std::int64_t window_timer_us = window_timer_ms * 1000;
constexpr std::int64_t link_us = 5'000;
constexpr std::int64_t byte_us = 10;

constinit std::int64_t now_us = 0;
constinit std::int64_t next_window_timer_us = window_timer_us;
constinit std::int64_t next_link_us = link_us;
constinit std::uint64_t delivered = 0;

void serve_window_timer() {
    next_window_timer_us += window_timer_us;
    window_timer();
    if (told_to_end()) stop_scenario();
}

void serve_link() {
    next_link_us += link_us;
    link_turn();
}

/// Serves what is due up to `until`, in the order of its time.
void serve_due(std::int64_t until) {
    while (!shutdown_requested.load()) {
        const std::int64_t due =
            std::min({next_window_timer_us, next_fade_us, next_link_us, scenario_due_us()});
        if (due > until) return;
        now_us = std::max(now_us, due);
        // What falls due at the same time runs in this order: the window timer, the step of the
        // fade, the turn of the link, the scenario.
        if (due == next_window_timer_us)
            serve_window_timer();
        else if (due == next_fade_us)
            serve_fade_step();
        else if (due == next_link_us)
            serve_link();
        else
            scenario_due();
    }
}

}  // namespace

void run_in_module_time() { run_firmware(); }

std::int64_t module_clock_us() { return now_us; }

void move_module_clock(std::int64_t us) {
    const std::int64_t end = now_us + us;
    serve_due(end);
    if (shutdown_requested.load()) return;
    now_us = end;
    scenario_move_ended();
}

void move_module_clock_by_byte() {
    const std::int64_t end = now_us + byte_us;
    serve_due(end);
    if (shutdown_requested.load()) return;
    now_us = end;
    // Only now: the quiet that settle waits for counts from the end of this move.
    ++delivered;
    scenario_move_ended();
}

std::uint64_t module_bytes_delivered() { return delivered; }

}  // namespace orvanel
