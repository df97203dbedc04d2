#include "host/platform/headless/module_time.h"

#include "firmware/core/ground/requests.h"
#include "firmware/core/roof/loop.h"
#include "host/platform/headless/end_signals.h"
#include "host/platform/life/schedule.h"
#include "host/scenario/runner.h"

#include <algorithm>

namespace orvanel {

namespace {

constexpr std::int64_t byte_us = 10;

constinit std::int64_t now_us = 0;
constinit std::uint64_t delivered = 0;

/// Serves what is due up to `until`, in the order of its time, and the scenario last of what falls
/// due at the same time.
void serve_all_due(std::int64_t until) {
    while (!shutdown_requested.load()) {
        const std::int64_t due = std::min(next_due_us, scenario_due_us());
        if (due > until) return;
        now_us = std::max(now_us, due);
        if (due != next_due_us)
            scenario_due();
        else if (serve_due(now_us) == Due::window_timer && told_to_end())
            stop_scenario();
    }
}

}  // namespace

void start_module_timers() { start_schedule(now_us, LinkRuns::here); }

void run_in_module_time() { run_firmware(); }

std::int64_t module_clock_us() { return now_us; }

void move_module_clock(std::int64_t us) {
    const std::int64_t end = now_us + us;
    serve_all_due(end);
    if (shutdown_requested.load()) return;
    now_us = end;
    scenario_move_ended();
}

void move_module_clock_by_byte() {
    const std::int64_t end = now_us + byte_us;
    serve_all_due(end);
    if (shutdown_requested.load()) return;
    now_us = end;
    // Only now: the quiet that settle waits for counts from the end of this move.
    ++delivered;
    scenario_move_ended();
}

std::uint64_t module_bytes_delivered() { return delivered; }

}  // namespace orvanel
