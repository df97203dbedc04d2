// raster_plain.h: the rules of drawing once more, dot by dot and slow, as what the engine's words
// are measured against. Nothing here knows of clipping but "outside the glass there is no dot".

#pragma once

#include "firmware/raster/planes.h"

namespace orvanel {

/// The new dot under a link mode, 0..7.
inline bool linked(int mode, bool dot, bool picture) {
    switch (mode) {
    case 1:
        return dot || picture;
    case 2:
        return dot && !picture;
    case 3:
        return dot != picture;
    case 4:
        return picture;
    case 5:
        return !picture;
    case 6:
        return false;
    case 7:
        return true;
    default:
        return dot;
    }
}

inline bool is_on_glass(int x, int y) { return x >= 0 && x < 240 && y >= 0 && y < 128; }

inline void link_dot(std::uint8_t* plane, int x, int y, int mode, bool picture) {
    if (is_on_glass(x, y)) plane_put(plane, x, y, linked(mode, plane_get(plane, x, y), picture));
}

/// Dot `column` of row `row` of a packed picture.
inline bool packed_dot(const std::uint8_t* rows, int width, int column, int row) {
    return (rows[(width + 7) / 8 * row + column / 8] >> (7 - column % 8) & 1) != 0;
}

}  // namespace orvanel
