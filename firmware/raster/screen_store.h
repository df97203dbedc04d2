// screen_store.h: rectangles of the display into the store's slots and back, and the copy of a
// rectangle inside one plane.

#pragma once

#include "firmware/raster/store_slots.h"

namespace orvanel {

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

// Handlers of group C.
void store_display();
void store_rectangle();
void paste_at_point();
void paste_in_place();

}  // namespace orvanel
