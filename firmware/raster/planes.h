// planes.h: the bit planes, and which of them the primitives write.

#pragma once

#include "firmware/core/ground/draw_area.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvanel {

constexpr int plane_stride = screen_width / 8;  // bytes a row
constexpr int plane_bytes = plane_stride * screen_height;

/// One plane: rows of plane_stride bytes, top row first, leftmost dot in bit 7, a set bit is a dark
/// dot.
using BitPlane = std::array<std::uint8_t, plane_bytes>;

/// The main plane directly followed by its flash plane: the display shows the first half in flash
/// phase 0 and the second in phase 1, so a dot flashes exactly if it differs between the two.
using PlaneSet = std::array<std::uint8_t, std::size_t{2} * plane_bytes>;

extern PlaneSet graphics_planes;
extern BitPlane terminal_plane;  // no flash half

inline std::uint8_t* main_plane() { return graphics_planes.data(); }

/// The flash plane of a plane that has one.
constexpr std::uint8_t* flash_plane_of(std::uint8_t* plane) { return plane + plane_bytes; }

/// The plane that all primitives read and write: main_plane() or terminal_plane, and within a few
/// operations the flash plane.
extern std::uint8_t* work_plane;

/// A primitive writes the flash plane of work_plane first and work_plane second; otherwise
/// work_plane alone. Never set while work_plane is terminal_plane.
extern bool both_planes;

/// Makes main plane and flash plane the drawing target, as at the start of each command.
void select_graphics_planes();

/// Makes the terminal's plane, alone, the drawing target.
void select_terminal_plane();

/// Where a dot lies: byte index in a plane, and its bit.
constexpr std::size_t plane_index(int x, int y) {
    return static_cast<std::size_t>(y * plane_stride + (x >> 3));
}
constexpr std::uint8_t dot_mask(int x) { return static_cast<std::uint8_t>(0x80 >> (x & 7)); }

/// One dot, 0..239 and 0..127; not checked.
inline bool plane_get(const std::uint8_t* plane, int x, int y) {
    return (plane[plane_index(x, y)] & dot_mask(x)) != 0;
}
inline void plane_put(std::uint8_t* plane, int x, int y, bool value) {
    std::uint8_t& byte = plane[plane_index(x, y)];
    byte = static_cast<std::uint8_t>(value ? byte | dot_mask(x) : byte & ~dot_mask(x));
}

}  // namespace orvanel
