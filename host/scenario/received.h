// received.h: the scenario's look at what comes in on the line, which the module reads itself.

#pragma once

#include <cstdint>
#include <vector>

namespace orvanel {

/// Waits, `ms` at most, until these bytes have come in one after the other, after those that an
/// earlier wait has found. What came before them may be anything.
void wait_for_received(std::vector<std::uint8_t> expected, std::int64_t ms);

}  // namespace orvanel
