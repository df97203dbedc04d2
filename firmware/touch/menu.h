// menu.h: menu boxes, framed lists of text rows over the display, one at a time. The host opens and
// steers one by group N; a touch menu is an area, the opener, that unfolds its list beside itself.

#pragma once

#include <cstdint>

namespace orvanel {

constexpr std::uint8_t no_menu_slot = 0xFF;
constexpr std::uint8_t no_opener = 0xFF;

/// Rows of the open box, 0: no box is open.
extern std::uint8_t menu_items;

/// The highlighted row, from 1; 0: none. Closing a box leaves it.
extern std::uint8_t menu_selection;

/// The menu slot of the open touch list.
extern std::uint8_t open_menu_slot;

/// The row of touch_areas whose opener was pressed last.
extern std::uint8_t menu_opener;

/// Does what a press on the opener in row `index` does: opens its list, or has the host asked to;
/// closes an open one; fires the codes of both.
void press_opener(int index);

/// Closes the list and starts the macro of the selected row, `base` being the code of row 1, or
/// sends the code. 0 closes without a word.
void choose_from_list(std::uint8_t base);

/// The row under the finger, from 1; it need not exist.
int menu_row_at_touch();

/// Moves the highlight to row n, if the box has that row.
void set_menu_selection(int n);

/// Closes the box, puts the background back, pops its opener up and removes the list's area.
/// Keeps x1, y1 of draw_area.
void close_menu();

/// Frees a slot of a menu definition. no_menu_slot is none.
void free_menu_slot(std::uint8_t slot);

/// Power-on: no box, no definitions; openers open their lists at once.
void power_on_menu();

// Handlers.
void define_touch_menu();
void open_menu_box();
void close_menu_command();
void send_menu_selection();
void start_menu_selection();
void next_menu_row();
void previous_menu_row();
void set_menu_opening();
void set_menu_rotation();
void set_menu_zoom();

}  // namespace orvanel
