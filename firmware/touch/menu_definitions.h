// menu_definitions.h: the definitions of touch menus, and which of them is open. An area of type
// opener names its definition by the slot.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvanel {

constexpr std::uint8_t no_menu_slot = 0xFF;
constexpr std::uint8_t no_opener = 0xFF;

constexpr std::size_t menu_text_size = 256;  // bytes, terminators included

/// A definition of a touch menu. `text` holds the opener's label and after it, from items_text on,
/// the row texts, each of the two ended by a zero.
struct MenuBox {
    std::uint8_t direction;    // 'U', 'O', 'L' or 'R': under, over, to the left or the right
    std::uint8_t list_code;    // of row 1, 0: a choice is not reported
    std::uint16_t items_text;  // offset in `text`; 0: the slot is free
    std::array<std::uint8_t, menu_text_size> text;
};

extern std::array<MenuBox, 8> menu_defs;

/// The menu slot of the open touch list.
extern std::uint8_t open_menu_slot;

/// The row of touch_areas whose opener was pressed last.
extern std::uint8_t menu_opener;

/// The first free slot, no_menu_slot if there is none.
std::uint8_t free_slot();

/// Frees a slot. no_menu_slot is none.
void free_menu_slot(std::uint8_t slot);

/// Power-on: no definitions, no list open.
void power_on_menu_definitions();

}  // namespace orvanel
