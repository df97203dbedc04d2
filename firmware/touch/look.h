// look.h: how an area shows on the display: its frame, its label, and its pressed look.

#pragma once

#include "firmware/text/layout.h"
#include "firmware/touch/areas.h"

#include <cstdint>

namespace orvanel {

/// The border number of the next rectangular key, switch or menu opener, 0 for none.
extern std::uint8_t touch_border;

/// Keys invert while they are held.
extern bool touch_invert;

/// Toggles the pressed look of row `index` and refreshes; nothing for an empty row. Leaves the
/// rectangle in draw_area.
void invert_touch_area(int index);

/// Lays out a label and draws it into the area's rectangle, by touch_font and touch_style. Its
/// first plain character says where: L, C and R are left, centre and right and not drawn, any other
/// is part of a centred text. The area keeps what it says.
void draw_key_label(TouchArea& area, StringSource source);

/// Power-on: border 1, keys invert.
void power_on_look();

}  // namespace orvanel
