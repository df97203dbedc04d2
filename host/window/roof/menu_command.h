// menu_command.h: what the items of the menu do. Main thread.

#pragma once

#include <string_view>

namespace orvanel {

/// Runs an item of menu.h, or one of a shortcut without item. While a box is open it waits until
/// that is closed. An unknown id does nothing.
void menu_command(int id);

/// The wheel with Ctrl held: so many zooms up, or down below 0, from 1 to 8. Nothing while a box is
/// open.
void zoom_by_wheel(int steps);

/// The answer of ask_for_file (seam/window_system.h): the chosen path, or "*.eep" if the
/// user gave up, which opens nothing.
void file_chosen(std::string_view path);

/// The user closed the panel of the ports by its box.
void ports_boxed();

/// Chooses the port 0..8 as its item does; Pactlink, or plain bytes.
void choose_port(int port);
void choose_framing(bool framed);

/// Where the help page and the companion are, as show_help and start_program take them. Set before
/// the window opens.
void set_companions(std::string_view help_page, std::string_view terminal_command);

}  // namespace orvanel
