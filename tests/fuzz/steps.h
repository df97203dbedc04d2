// steps.h: for fuzz targets that take an input apart step by step, and check as they go.

#pragma once

#include <cstdint>
#include <cstdlib>
#include <span>

namespace orvanel {

/// Stops the run with the input as a find.
inline void check(bool holds) {
    if (!holds) std::abort();
}

/// The next byte of the input, 0 at its end.
inline std::uint8_t take(std::span<const std::uint8_t>& steps) {
    if (steps.empty()) return 0;
    const std::uint8_t byte = steps.front();
    steps = steps.subspan(1);
    return byte;
}

}  // namespace orvanel
