// store_slots.h: rectangles of the display kept in memory. What takes and draws them is in
// screen_store.h; a refresh may show one in place of the graphics planes.

#pragma once

#include "firmware/raster/planes.h"

#include <array>
#include <cstdint>

namespace orvanel {

constexpr int menu_slot = 0;       // the background under an open menu box
constexpr int clipboard_slot = 1;  // of the clipboard commands

/// A rectangle and where it was taken. `buffer` holds its main plane as packed rows in the first
/// half and its flash plane in the second, plane_bytes after it.
struct ScreenStore {
    PlaneSet buffer;
    std::int32_t x;       // left edge where it was taken
    std::int32_t width;   // dots
    std::uint8_t y;       // top edge
    std::uint8_t height;  // dots, 0: the slot is empty
};

/// Zero at program start. A reset empties the slots without clearing their bytes.
extern std::array<ScreenStore, 2> store_slots;

/// Power-on: both slots empty.
void power_on_store();

/// Program start: no bytes either.
void cold_start_store();

}  // namespace orvanel
