// boxes.h: what happens while a box is open: a dialog, a message, the question for a file. Ticks,
// feeds and the line go on; menu items and dropped files wait for the last box to close and are
// done then, in their order. Main thread.

#pragma once

#include <string_view>

namespace orvanel {

/// A box opens, or has been closed. The calls come in pairs. A platform makes them for the boxes
/// that it opens itself (messages, the question for a file), dialog.h for its own.
void box_opened();
void box_closed();

bool box_is_open();

/// True while a box is open: the menu item, the dropped file (drop_file of
/// host/import/picture_import.h) has been put aside and will be called again. False if nothing
/// keeps it.
bool put_off_menu_item(int id);
bool put_off_drop(std::string_view path, int px, int py);

}  // namespace orvanel
