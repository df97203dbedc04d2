// module.h: the whole firmware on the test's own thread, fed with a stream.

#pragma once

#include <cstdint>
#include <span>

namespace orvanel {

/// As at program start: blank image, and nothing left of what outlives a reset.
void fresh_module();

/// Resets the module, feeds it the whole stream and lets it run until it is idle, or has taken
/// `max_bytes` in an endless macro; then ends it. What outlives a reset stays from the run before.
void run_stream(std::span<const std::uint8_t> stream, long max_bytes = 10'000'000);

}  // namespace orvanel
