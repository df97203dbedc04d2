#include "host/platform/headless/real_session.h"

#include "base/visible.h"
#include "host/platform/headless/end_signals.h"
#include "host/platform/headless/first_port.h"
#include "host/platform/instance/instance.h"
#include "host/platform/life/schedule.h"
#include "host/platform/real_time/real_time.h"
#include "host/platform/system/wake.h"
#include "host/program/program_folder.h"
#include "host/requests/main_requests.h"
#include "host/scenario/ending.h"
#include "host/scenario/runner.h"
#include "host/scenario/waits.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>

namespace orvanel {

namespace {

using std::chrono::steady_clock;

constexpr std::int64_t us_per_ms = 1000;
constexpr std::int64_t test_step_us = us_per_ms;  // between two looks at what the scenario awaits

constinit steady_clock::time_point start{};
constinit int timers_run = 0;
constinit int main_wake = -1;

// The reset cycle of the start, which clears the pipes, is over when the firmware first sleeps or
// takes a byte. Not before does the scenario begin.
constinit std::atomic<bool> firmware_moves{false};
constinit std::atomic<std::uint64_t> delivered{0};  // written by firmware_thread alone

/// How long the next poll may wait.
int turn_ms() {
    const std::int64_t now = real_clock_us();
    std::int64_t due = std::min(next_due_us, scenario_due_us());
    if (!firmware_moves.load(std::memory_order_relaxed) || waiting_for_event())
        due = std::min(due, now + test_step_us);
    return static_cast<int>((std::max<std::int64_t>(due - now, 0) + us_per_ms - 1) / us_per_ms);
}

void serve_all_due() {
    const std::int64_t now = real_clock_us();
    while (next_due_us <= now) {
        if (serve_due(now) != Due::window_timer) continue;
        ++timers_run;
        save_programmed_image();
    }
}

}  // namespace

std::int64_t real_clock_us() {
    using std::chrono::duration_cast;
    using std::chrono::microseconds;
    return duration_cast<microseconds>(steady_clock::now() - start).count();
}

void note_real_sleep() { firmware_moves.store(true, std::memory_order_release); }

void note_real_byte() {
    firmware_moves.store(true, std::memory_order_release);
    delivered.store(delivered.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
}

std::uint64_t real_bytes_delivered() { return delivered.load(std::memory_order_relaxed); }

int window_timers_run() { return timers_run; }

void wake_real_session() { set_wake(main_wake); }

std::string open_real_port(const std::string& serial) {
    main_wake = open_wake();
    if (main_wake < 0 || !open_real_time()) return "no file descriptor left";
    run_leading_lines();
    if (!scenario_ended())
        if (std::string fault = open_first_port(serial); !fault.empty()) return fault;
    // Standard output is the line's from here on.
    if (serial == "stdio") dup2(STDERR_FILENO, STDOUT_FILENO);
    return {};
}

void start_real_timers() {
    start = steady_clock::now();
    start_schedule(real_clock_us(), LinkRuns::on_its_thread);
}

void turn_real_session() {
    const int input = scenario_wants_input() ? scenario_input_fd() : -1;
    std::array<pollfd, 4> fds{pollfd{main_wake, POLLIN, 0}, pollfd{end_signals_fd(), POLLIN, 0},
                              pollfd{input, POLLIN, 0}, pollfd{instance_fd(), POLLIN, 0}};
    if (poll(fds.data(), fds.size(), turn_ms()) < 0) return;
    if (fds[0].revents != 0) {
        take_wake(main_wake);
        serve_main_requests();
    }
    if (fds[1].revents != 0) stop_scenario();
    serve_all_due();
    if (fds[2].revents != 0) scenario_input_ready();
    if (fds[3].revents != 0) serve_instance();
    if (real_clock_us() >= scenario_due_us()) scenario_due();
    if (firmware_moves.load(std::memory_order_acquire)) scenario_move_ended();
}

void close_real_session() {
    close_instance();
    stop_module();
    close_real_time();
    close_wake(main_wake);
}

void run_in_real_time() {
    if (const std::string fault = open_instance(false); !fault.empty())
        tell_user("orvanel42-headless: no companion can connect: " + fault);
    while (!scenario_ended())
        turn_real_session();
    close_real_session();
}

}  // namespace orvanel
