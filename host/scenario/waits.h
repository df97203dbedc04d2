// waits.h: the one wait that a scenario can be in, and what ends it. Times are those of clock_us.

#pragma once

#include "host/platform/life/schedule.h"
#include "host/scenario/expectations.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orvanel {

/// Begin to wait: for the time to pass, for the module to be quiet, for answers, for bytes on
/// the line, for a picture.
/// `ms` is how long, or how long at most. Waiting for 0 ms is no wait. A picture that is to be
/// written, and doesn't show before, is written at the end of that time.
void wait_for_time(std::int64_t ms);
void wait_for_quiet(std::int64_t ms);
void wait_for_answers(std::vector<std::uint8_t> expected, std::int64_t ms);
void wait_for_line_bytes(std::vector<std::uint8_t> expected, std::int64_t ms);
void wait_for_screen(ScreenExpectation expectation, std::int64_t ms);

/// The same for whatever `come` tells. `missed` reports that it hasn't within that time, in words
/// that begin with `within`. Waits up to the end of a move at least.
void wait_for_condition(std::function<bool()> come,
                        std::function<void(const std::string& within)> missed, std::int64_t ms);

/// What a command has still to do after the wait that it has begun. A step may begin a wait itself;
/// then the next one comes after that. A command that fails halfway drops the rest.
void add_step(std::function<void()> step);
void drop_steps();

/// Does the next step; false if there is none.
bool run_next_step();

bool waiting();

/// True while something else than time can end the wait.
bool waiting_for_event();

/// The time at which the wait ends in any case, `never` without a wait.
std::int64_t wait_end_us();

/// Ends the wait if what it waits for has come, or can't come any more. For the end of each move of
/// the clock.
void test_wait();

/// The time wait_end_us has come: tests a last time, then gives up with a report.
void end_wait();

}  // namespace orvanel
