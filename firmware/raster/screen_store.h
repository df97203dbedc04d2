// screen_store.h: rectangles of the display kept in memory, and the copy of a rectangle inside one
// plane.

#pragma once

#include "firmware/raster/planes.h"

#include <array>
#include <cstdint>

namespace orvanel {

constexpr int menu_slot = 0;       // the background under an open menu box
constexpr int clipboard_slot = 1;  // of the clipboard commands

/// A rectangle and where it was taken. `buffer` holds its main plane as packed rows in the first
/// half and its flash plane in the second, plane_bytes behind it.
struct ScreenStore {
    PlaneSet buffer;
    std::int32_t x;       // left edge where it was taken
    std::int32_t width;   // dots
    std::uint8_t y;       // top edge
    std::uint8_t height;  // dots, 0: the slot is empty
};

/// Zero at program start. A reset empties the slots without clearing their bytes.
extern std::array<ScreenStore, 2> store_slots;

/// Saves draw_area of work_plane and of its flash plane. Changes nothing on the display, but for a
/// view of the clipboard, which it refreshes.
void store_area(int slot);

/// Draws the slot back at x1, y1 of draw_area, each plane from its own half, and refreshes.
/// Nothing for an empty slot. Leaves both_planes off.
void restore_area(int slot);

/// Copies draw_area of work_plane, alone, to the given corner; source and target may overlap.
/// The caller selects the plane with both_planes off, and refreshes. Leaves draw_area at the
/// target.
void move_area(int target_x, int target_y);

/// Power-on: both slots empty.
void power_on_store();

// Handlers of group C.
void store_display();
void store_rectangle();
void paste_at_point();
void paste_in_place();

}  // namespace orvanel
