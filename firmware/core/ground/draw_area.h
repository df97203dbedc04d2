// draw_area.h: the operand block of all raster primitives.

#pragma once

#include <cstdint>

namespace orvanel {

constexpr int screen_width = 240;   // dots
constexpr int screen_height = 128;  // dots
constexpr int last_x = screen_width - 1;
constexpr int last_y = screen_height - 1;

/// A rectangle of dots, both corners inclusive. A start beyond its end is an empty rectangle.
struct DrawArea {
    std::int32_t x1;  // dots, 0..239 but in the middle of a computation
    std::uint8_t y1;  // dots, 0..127
    std::int32_t x2;
    std::uint8_t y2;

    friend bool operator==(const DrawArea&, const DrawArea&) = default;
};

constexpr DrawArea whole_screen{0, 0, last_x, last_y};

/// The one instance. Readers write it, primitives read it, and several leave another rectangle in
/// it. Power-on: the whole screen.
extern DrawArea draw_area;

}  // namespace orvanel
