// border.h: frames of 8 x 8 tiles around a rectangle. An odd border number is an outline, the even
// number after it the same outline with a filled panel inside.

#pragma once

#include <array>
#include <cstdint>

namespace orvanel {

constexpr int max_border = 18;  // border numbers run from 1

/// The tiles of a frame: rows of 8 dots, leftmost dot in bit 7.
using Tile = std::array<std::uint8_t, 8>;
struct BorderRecord {
    std::uint8_t left;   // one row, repeated down the left side between the corners
    bool fill;           // the interior is painted solid
    std::uint8_t right;  // one row, repeated down the right side
    Tile top_left, top, top_right, bottom_left, bottom, bottom_right;
};

/// Draws border n into draw_area, whose corners are ordered, under link mode 1, 3 or 4, and
/// refreshes. Mode 3 inverts the panel of n alone: a pressed key, undone by a second call. The
/// result is n if tiles were drawn, else 0: for n = 0 nothing happens; a rectangle less than 16
/// dots wide or high gets the pen's outline; a number above max_border draws nothing.
std::uint8_t draw_border(std::uint8_t n, std::uint8_t mode);

// Handlers.
void border_set_command();
void border_replace_command();

}  // namespace orvanel
