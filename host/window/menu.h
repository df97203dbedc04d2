// menu.h: the menu bar as a table, from which a window system builds its menu, and what each item
// does. The popup on the right mouse button shows the same submenus. Main thread.

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace orvanel {

enum class MenuPart : std::uint8_t {
    submenu,  // `label` opens a menu: the rows behind it, up to its `end`
    item,     // `id` and `label`; a tab in it separates the name of its shortcut
    separator,
    end,
};

struct MenuRow {
    MenuPart part;
    int id;                  // 110..520, 0 for what isn't an item
    std::string_view label;  // with an ampersand before the letter that chooses it
};

/// The menu bar, top level first: "&File" ... its rows ... end, "&View" ...
std::span<const MenuRow> menu_rows();

/// A shortcut: Ctrl and a letter or digit, or Shift and a function key.
struct Shortcut {
    std::string_view keys;  // "Ctrl+R", "Shift+F1"
    int id;
};

/// All shortcuts of the accelerator table, and those that have no item: Ctrl+4 to Ctrl+8 for the
/// zooms above the menu's, as menu_zoom + zoom. Alt+F4 belongs to the system and isn't here.
constexpr int menu_zoom = 1000;
std::span<const Shortcut> shortcuts();

/// Runs an item. While a box is open it waits until that is closed. An unknown id does nothing.
void menu_command(int id);

/// Marks zoom, rotation, frame, on-top, panel and model; the port; the speed; Pactlink and
/// touch beep.
void menu_mark_view();
void menu_mark_port();
void menu_mark_baud();
void menu_mark_switches();

/// Whether an item has its check mark.
bool menu_marked(int id);

/// Puts name, port and protocol into the window's title; the title as it stands.
void title_update();
std::string_view window_title();

/// The answer of ask_for_file.
void file_chosen(std::string_view path);

}  // namespace orvanel
