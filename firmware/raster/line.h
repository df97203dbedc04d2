// line.h: points, lines and rectangle outlines with a rectangular pen.

#pragma once

#include <cstdint>

namespace orvanel {

extern std::uint8_t pen_width;   // dots, 1..16; a draw area may lend 0
extern std::uint8_t pen_height;  // dots, 1..16
extern std::uint8_t pen_link;    // 0..7, a link mode of area_fill.h; 0, 6 and 7 draw nothing
extern std::int32_t last_point_x;
extern std::uint8_t last_point_y;

/// Draws the pen's box around x, y (on the glass), cut at the display's edges. Leaves the box in
/// draw_area, empty for a pen of size 0. Sets both_planes. Refreshes nothing.
void draw_point(int x, int y);

/// Draws from x1, y1 to x2, y2 of draw_area, in any order, and sets dirty_area to the line's
/// extent. Leaves the last pen box in draw_area.
void draw_line();

/// Draws the outline of draw_area, whose corners are ordered, and refreshes each side. Leaves the
/// last side in draw_area.
void draw_rect();

/// Power-on: pen 1 x 1 under link mode 1, last point 0, 0.
void power_on_pen();

// Handlers of group G.
void line_command();
void line_on_command();
void point_command();
void rect_command();
void set_pen_link();
void set_pen_size();

}  // namespace orvanel
