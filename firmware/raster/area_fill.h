// area_fill.h: combining a rectangle with a pattern, the primitive under every fill, line and
// point.

#pragma once

#include <array>
#include <cstdint>

namespace orvanel {

/// Link modes of area operations, d the old dot and p the pattern's: any other value changes
/// nothing.
constexpr std::uint8_t link_set = 1;              // d OR p
constexpr std::uint8_t link_clear = 2;            // d AND NOT p
constexpr std::uint8_t link_invert = 3;           // d XOR p
constexpr std::uint8_t link_replace = 4;          // p
constexpr std::uint8_t link_replace_inverse = 5;  // NOT p

constexpr std::uint8_t pattern_clear = 0;
constexpr std::uint8_t pattern_solid = 1;

/// 16 patterns of 8 rows, leftmost dot in bit 7. They are anchored to the display: dot x, y takes
/// row y & 7, column x & 7, so adjacent fills join without a seam.
extern const std::array<std::array<std::uint8_t, 8>, 16> pattern_table;

/// Combines each dot of draw_area with the pattern under `mode`, on the planes that work_plane and
/// both_planes select, each with its own old dot. Pattern numbers act modulo 16. An area whose
/// start exceeds its end stays as it is. Refreshes nothing.
void fill_area(std::uint8_t mode, std::uint8_t pattern);

/// A solid edge of one dot around the pattern in draw_area, and its refresh. Leaves the inner
/// rectangle in draw_area.
void draw_box(std::uint8_t pattern);

// Handlers of group R but for the borders; the rectangle is in draw_area.
void clear_area_command();
void set_area_command();
void invert_area_command();
void pattern_area_command();
void box_command();

}  // namespace orvanel
