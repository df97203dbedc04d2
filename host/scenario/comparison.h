// comparison.h: two pictures of the glass held against each other, and what to tell of them.

#pragma once

#include "firmware/raster/planes.h"

#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

/// Where two pictures differ.
struct Difference {
    int dots;              // how many; 0 leaves all else 0
    int x1, y1, x2, y2;    // the smallest rectangle around them, inclusive
    int first_x, first_y;  // the first one, row by row from the top
};

Difference compare_pictures(const BitPlane& expected, const BitPlane& actual);

/// How many dots differ, where, and the rectangle in characters: expected beside actual, cut to 60
/// x 20 dots. Several lines, the last one without its end.
std::string explain_difference(const Difference& difference, const BitPlane& expected,
                               const BitPlane& actual);

/// Where two strings of bytes part, and both around that place in hexadecimal. Several lines, the
/// last one without its end.
std::string explain_bytes(std::span<const std::uint8_t> expected,
                          std::span<const std::uint8_t> actual);

}  // namespace orvanel
