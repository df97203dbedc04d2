// menu.h: the menu bar as a table, from which a window system builds its menu, and its check marks.
// The popup on the right mouse button shows the same submenus. What an item does is in
// menu_command.h. Main thread.

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace orvanel {

enum class MenuPart : std::uint8_t {
    submenu,  // `label` opens a menu: the rows after it, up to its `end`
    item,     // `id` and `label`; a tab in it separates the name of its shortcut
    separator,
    end,
};

struct MenuRow {
    MenuPart part;
    int id;                  // 110..520, 0 for what isn't an item
    std::string_view label;  // with an ampersand before the letter that chooses it
};

// The items by number. Where several belong together this is the first of them.
constexpr int item_reset = 110;  // + the kind, 0..3
constexpr int item_demo = 130;
constexpr int item_open = 140;
constexpr int item_clipboard = 150;
constexpr int item_terminal = 160;
constexpr int item_exit = 170;
constexpr int item_zoom = 210;  // + the zoom - 1, for 1..3
constexpr int item_rotate = 220;
constexpr int item_frame = 230;
constexpr int item_on_top = 240;
constexpr int item_panel = 250;
constexpr int item_model = 270;  // + skin_model, 0..3
constexpr int item_port = 310;   // + the port, 0..8
constexpr int item_baud = 320;   // + the index in line_speeds
constexpr int item_protocol = 330;
constexpr int item_beep = 340;
constexpr int item_help = 510;
constexpr int item_about = 520;

constexpr int max_menu_zoom = 3;

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

/// Whether the menu has an item of that number.
bool is_menu_item(int id);

/// Mark zoom, rotation, frame, on-top, panel and model; the port; the speed; Pactlink and touch
/// beep. A zoom, a model or a speed that has no item leaves all of its kind without mark.
void menu_mark_view();
void menu_mark_port();
void menu_mark_baud();
void menu_mark_switches();

/// Whether an item has its check mark; false for what is no item.
bool menu_marked(int id);

}  // namespace orvanel
