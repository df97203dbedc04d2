// menu.h: menu boxes, framed lists of text rows over the display, one at a time. The host opens and
// steers one by group N; a touch menu (opener.h) unfolds one beside its opener.

#pragma once

#include "firmware/core/ground/draw_area.h"
#include "firmware/text/layout.h"
#include "firmware/touch/areas.h"

#include <array>
#include <cstdint>

namespace orvanel {

/// Rows of the open box, 0: no box is open.
extern std::uint8_t menu_items;

/// The highlighted row, from 1; 0: none. Closing a box leaves it.
extern std::uint8_t menu_selection;

/// What the rows of the open box say, parted by line feeds. For whoever looks from outside: the
/// module itself never reads it. A layout has no room for more.
struct MenuText {
    std::uint16_t length;  // bytes
    std::array<std::uint8_t, 384> text;
};
extern MenuText menu_text;

/// Where row n of the open box lies, 1..menu_items. What is off the glass is clamped to its edge.
DrawArea menu_row_rectangle(int n);

/// The row under the finger, from 1; it need not exist.
int menu_row_at_touch();

/// Opens a box with the rows of the source, beside the opener if there is one, else at x1, y1 of
/// draw_area. menu_items stays 0 if there is nothing to show.
void open_box(StringSource source, const TouchArea* opener);

/// The open box less its frame, as the area of its list.
DrawArea list_rectangle();

/// Moves the highlight to row n, if the box has that row.
void set_menu_selection(int n);

/// Closes the box, puts the background back, pops its opener up and removes the list's area.
/// Keeps x1, y1 of draw_area.
void close_menu();

/// Power-on: no box.
void power_on_menu();

// Handlers.
void open_menu_box();
void close_menu_command();
void send_menu_selection();
void start_menu_selection();
void next_menu_row();
void previous_menu_row();
void set_menu_rotation();
void set_menu_zoom();

}  // namespace orvanel
