// schedule.h: what falls due again and again on the main thread while the module runs, for a
// program whose event loop has no timers of its own. Times are microseconds on the program's clock.

#pragma once

#include <cstdint>
#include <limits>

namespace orvanel {

constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max();

/// In the order in which what falls due at the same time is served.
enum class Due : std::uint8_t {
    window_timer,  // each 100 ms
    fade_step,     // each 20 ms while the backlight fades
    link_turn,     // each 5 ms where link_thread doesn't run
};

/// Who moves the bytes of the line.
enum class LinkRuns : std::uint8_t { here, on_its_thread };

/// Starts it again: the first of each is due after its period, a step of the fade never.
void start_schedule(std::int64_t now_us, LinkRuns link);

/// What set_fade_timer (seam/platform.h) asks for.
void schedule_fade(bool runs, std::int64_t now_us);

/// When serve_due has something to do next; `never` before start_schedule.
extern std::int64_t next_due_us;

/// Serves what is due first, which next_due_us says has come, and tells what that was. One that was
/// served late doesn't make up for those that it has missed.
Due serve_due(std::int64_t now_us);

}  // namespace orvanel
