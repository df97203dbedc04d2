// opener.h: touch menus. One is an area, the opener, that unfolds its list beside itself; a choice
// from the list starts a menu macro or goes to the host.

#pragma once

#include <cstdint>

namespace orvanel {

/// Does what a press on the opener in row `index` does: opens its list, or has the host asked to;
/// closes an open one; fires the codes of both.
void press_opener(int index);

/// Closes the list and starts the macro of the selected row, `base` being the code of row 1, or
/// sends the code. 0 closes without a word.
void choose_from_list(std::uint8_t base);

/// Power-on: openers open their lists at once.
void power_on_opener();

// Handlers.
void define_touch_menu();
void set_menu_opening();

}  // namespace orvanel
