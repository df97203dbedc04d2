// boxes.h: what happens while a box is open: a dialog, a message, the question for a file. Ticks,
// feeds and the line go on; menu items and dropped files wait for the last box to close and are
// done then, in their order. Main thread.

#pragma once

#include <functional>

namespace orvanel {

/// A box opens, or has been closed. The calls come in pairs. A platform makes them for the boxes
/// that it opens itself (messages, the question for a file), dialog.h for its own.
void box_opened();
void box_closed();

bool box_is_open();

/// The window goes, and its boxes with it: none is open, and what waited for one never runs.
void drop_boxes();

/// True while a box is open: the action has been put aside and runs once the last box is closed.
/// False if nothing keeps it from running now.
bool postpone(std::function<void()> action);

}  // namespace orvanel
