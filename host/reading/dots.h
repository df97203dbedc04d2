// dots.h: a picture of the glass as rows of words, for whoever compares many places of it at once.

#pragma once

#include "firmware/core/ground/draw_area.h"
#include "firmware/raster/planes.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvanel {

/// One row: the leftmost dot in the most significant bit of the first word. What is right of the
/// glass is clear.
using DotRow = std::array<std::uint64_t, 4>;
using DotRows = std::array<DotRow, screen_height>;

inline DotRows rows_of(const BitPlane& plane) {
    DotRows rows{};
    for (std::size_t i = 0; i < plane.size(); ++i) {
        const std::size_t column = i % plane_stride;
        rows[i / plane_stride][column / 8] |= std::uint64_t{plane[i]} << (56 - column % 8 * 8);
    }
    return rows;
}

/// The row from dot `by` on, 0..255, clear on the right.
inline DotRow from_dot(const DotRow& row, int by) {
    const auto words = static_cast<std::size_t>(by / 64);
    const int bits = by % 64;
    DotRow result{};
    for (std::size_t i = 0; i + words < row.size(); ++i) {
        result[i] = row[i + words] << bits;
        if (bits != 0 && i + words + 1 < row.size()) result[i] |= row[i + words + 1] >> (64 - bits);
    }
    return result;
}

/// The dots x1..x2 of a row, none if they are out of order.
inline DotRow dots_from_to(int x1, int x2) {
    DotRow row{};
    for (int x = x1; x <= x2; ++x)
        row[static_cast<std::size_t>(x / 64)] |= std::uint64_t{1} << (63 - x % 64);
    return row;
}

inline bool has_dots(const DotRow& row) { return (row[0] | row[1] | row[2] | row[3]) != 0; }

inline bool dot_at(const DotRow& row, int x) {
    return (row[static_cast<std::size_t>(x / 64)] >> (63 - x % 64) & 1) != 0;
}

}  // namespace orvanel
