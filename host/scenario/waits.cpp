#include "host/scenario/waits.h"

#include "host/scenario/answers.h"
#include "host/scenario/report.h"
#include "host/scenario/world.h"
#include "link/feeds/feeds.h"
#include "link/ground/pipes.h"

#include <deque>
#include <optional>
#include <string>
#include <utility>

namespace orvanel {

namespace {

constexpr std::int64_t us_per_ms = 1000;
constexpr std::int64_t quiet_us = 20 * us_per_ms;

enum class Wait : std::uint8_t { none, time, quiet, answers, line, screen, condition };

constinit Wait wait = Wait::none;
constinit std::int64_t wait_ms = 0;
constinit std::int64_t end_us = never;

// Quiet: the bytes delivered when last looked, and since when it is.
constinit std::uint64_t delivered_seen = 0;
constinit std::int64_t quiet_since_us = 0;

constinit std::vector<std::uint8_t> expected_bytes{};          // while wait is answers or line
constinit std::optional<ScreenExpectation> expected_screen{};  // while wait is screen

std::function<bool()> awaited_condition;  // while wait is condition
std::function<void(const std::string&)> condition_missed;
std::deque<std::function<void()>> steps;

void begin(Wait kind, std::int64_t ms) {
    wait = kind;
    wait_ms = ms;
    end_us = clock_us() + ms * us_per_ms;
}

void stop_waiting() {
    wait = Wait::none;
    end_us = never;
}

bool is_quiet() {
    if (const std::uint64_t delivered = bytes_delivered(); delivered != delivered_seen) {
        delivered_seen = delivered;
        quiet_since_us = clock_us();
    }
    return clock_us() - quiet_since_us >= quiet_us && rx_count() == 0 && feed_left() == 0 &&
           line_queued() == 0;
}

std::string within() { return "within " + std::to_string(wait_ms) + " ms"; }

void report_unquiet() {
    const std::int64_t quiet_ms = (clock_us() - quiet_since_us) / us_per_ms;
    report_fault(gave_up, "the module was not quiet " + within() + ": no byte was delivered for " +
                              std::to_string(quiet_ms) + " ms, " + std::to_string(rx_count()) +
                              " wait in rx_pipe, " + std::to_string(feed_left()) +
                              " in the feed, " + std::to_string(line_queued()) + " on the line");
}

void test_answers() {
    const Match match = match_answers(expected_bytes);
    if (match == Match::not_yet) return;
    stop_waiting();
    if (match == Match::impossible)
        report_answers(expected_bytes, waiting_answers(), "other answers: ");
}

void test_line() {
    const Match match = match_line(expected_bytes);
    if (match == Match::not_yet) return;
    stop_waiting();
    if (match == Match::impossible)
        report_answers(expected_bytes, line_sent(), "other bytes on the line: ");
}

}  // namespace

void wait_for_time(std::int64_t ms) {
    if (ms > 0) begin(Wait::time, ms);
}

void wait_for_quiet(std::int64_t ms) {
    begin(Wait::quiet, ms);
    delivered_seen = bytes_delivered();
    quiet_since_us = clock_us();
}

void wait_for_answers(std::vector<std::uint8_t> expected, std::int64_t ms) {
    expected_bytes = std::move(expected);
    begin(Wait::answers, ms);
}

void wait_for_line_bytes(std::vector<std::uint8_t> expected, std::int64_t ms) {
    expected_bytes = std::move(expected);
    begin(Wait::line, ms);
}

void wait_for_screen(ScreenExpectation expectation, std::int64_t ms) {
    expected_screen = std::move(expectation);
    begin(Wait::screen, ms);
}

void wait_for_condition(std::function<bool()> come,
                        std::function<void(const std::string& within)> missed, std::int64_t ms) {
    awaited_condition = std::move(come);
    condition_missed = std::move(missed);
    begin(Wait::condition, ms);
}

void add_step(std::function<void()> step) { steps.push_back(std::move(step)); }

void drop_steps() { steps.clear(); }

bool run_next_step() {
    if (steps.empty()) return false;
    const auto step = std::move(steps.front());
    steps.pop_front();
    step();
    return true;
}

bool waiting() { return wait != Wait::none; }

bool waiting_for_event() { return wait != Wait::none && wait != Wait::time; }

std::int64_t wait_end_us() { return end_us; }

void test_wait() {
    switch (wait) {
    case Wait::none:
    case Wait::time:
        return;
    case Wait::quiet:
        if (is_quiet()) stop_waiting();
        return;
    case Wait::answers:
        test_answers();
        return;
    case Wait::line:
        test_line();
        return;
    case Wait::screen:
        if (glass_shows(*expected_screen)) stop_waiting();
        return;
    case Wait::condition:
        if (awaited_condition()) stop_waiting();
        return;
    }
}

void end_wait() {
    test_wait();
    const Wait unmet = wait;
    stop_waiting();
    switch (unmet) {
    case Wait::none:
    case Wait::time:
        return;
    case Wait::quiet:
        report_unquiet();
        return;
    case Wait::answers:
        report_answers(expected_bytes, waiting_answers(), "not all answers " + within() + ": ");
        return;
    case Wait::line:
        report_answers(expected_bytes, line_sent(), "not all bytes on the line " + within() + ": ");
        return;
    case Wait::screen:
        miss_screen(*expected_screen, within() + " never ");
        return;
    case Wait::condition:
        condition_missed(within());
        return;
    }
}

}  // namespace orvanel
