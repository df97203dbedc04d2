#include "host/window/ground/menu.h"

#include "host/program/settings.h"
#include "host/window/ground/ports_panel.h"
#include "link/ground/port.h"
#include "seam/window_system.h"

#include <algorithm>
#include <iterator>

namespace orvanel {

namespace {

using enum MenuPart;

// clang-format off
constexpr MenuRow rows[]{
    {submenu,   0,               "&File"},
    {submenu,   0,               "&Reset"},
    {item,      item_reset,      "&PowerOn\tCtrl+R"},
    {item,      item_reset + 1,  "&Hardware"},
    {item,      item_reset + 2,  "&Watchdog"},
    {item,      item_reset + 3,  "&BrwonOut"},  // the module's own name for it
    {end,       0,               ""},
    {item,      item_demo,       "&Demo"},
    {item,      item_open,       "&Open\tCtrl+O"},
    {separator, 0,               ""},
    {item,      item_clipboard,  "&BMP->Clipboard\tCtrl+C"},
    {separator, 0,               ""},
    {item,      item_terminal,   "Glas &Terminal\tCtrl+T"},
    {separator, 0,               ""},
    {item,      item_exit,       "E&xit\tAlt+F4"},
    {end,       0,               ""},
    {submenu,   0,               "&View"},
    {item,      item_zoom,       "&Normal\tCtrl+1"},
    {item,      item_zoom + 1,   "Zoom &2x\tCtrl+2"},
    {item,      item_zoom + 2,   "Zoom &3x\tCtrl+3"},
    {separator, 0,               ""},
    {item,      item_rotate,     "Vertical 90 &degree\tCtrl+D"},
    {item,      item_frame,      "Show &Window\tCtrl+W"},
    {item,      item_on_top,     "Always &On Top\tCtrl+A"},
    {separator, 0,               ""},
    {item,      item_panel,      "Out &Ports\tCtrl+Y"},
    {separator, 0,               ""},
    {item,      item_model,      "Orvanel42&B-Q\tCtrl+B"},
    {item,      item_model + 1,  "Orvanel42&J-Q\tCtrl+J"},
    {item,      item_model + 2,  "Orvanel42J-Q&R\tCtrl+M"},
    {item,      item_model + 3,  "Orvanel42-Cus&tom\tCtrl+U"},
    {end,       0,               ""},
    {submenu,   0,               "&Options"},
    {submenu,   0,               "&COM"},
    {item,      item_port,       "&None"},
    {item,      item_port + 1,   "COM&1"},
    {item,      item_port + 2,   "COM&2"},
    {item,      item_port + 3,   "COM&3"},
    {item,      item_port + 4,   "COM&4"},
    {item,      item_port + 5,   "COM&5"},
    {item,      item_port + 6,   "COM&6"},
    {item,      item_port + 7,   "COM&7"},
    {item,      item_port + 8,   "COM&8"},
    {end,       0,               ""},
    {submenu,   0,               "&Baudrate"},
    {item,      item_baud,       "  &1200"},
    {item,      item_baud + 1,   "  &2400"},
    {item,      item_baud + 2,   "  &4800"},
    {item,      item_baud + 3,   "  &9600"},
    {item,      item_baud + 4,   " 1920&0"},
    {item,      item_baud + 5,   " 3&8400"},
    {item,      item_baud + 6,   " 5&7600"},
    {item,      item_baud + 7,   "11&5200"},
    {end,       0,               ""},
    {separator, 0,               ""},
    {item,      item_protocol,   "&Pactlink"},
    {separator, 0,               ""},
    {item,      item_beep,       "&Touch-Beep"},
    {end,       0,               ""},
    {submenu,   0,               "&Help"},
    {item,      item_help,       "&Overview\tShift+F1"},
    {separator, 0,               ""},
    {item,      item_about,      "&About"},
    {end,       0,               ""},
};

constexpr Shortcut keys[]{
    {"Ctrl+R",   item_reset},
    {"Ctrl+O",   item_open},
    {"Ctrl+C",   item_clipboard},
    {"Ctrl+T",   item_terminal},
    {"Ctrl+1",   item_zoom},
    {"Ctrl+2",   item_zoom + 1},
    {"Ctrl+3",   item_zoom + 2},
    {"Ctrl+4",   menu_zoom + 4},
    {"Ctrl+5",   menu_zoom + 5},
    {"Ctrl+6",   menu_zoom + 6},
    {"Ctrl+7",   menu_zoom + 7},
    {"Ctrl+8",   menu_zoom + 8},
    {"Ctrl+D",   item_rotate},
    {"Ctrl+W",   item_frame},
    {"Ctrl+A",   item_on_top},
    {"Ctrl+Y",   item_panel},
    {"Ctrl+B",   item_model},
    {"Ctrl+J",   item_model + 1},
    {"Ctrl+M",   item_model + 2},
    {"Ctrl+U",   item_model + 3},
    {"Shift+F1", item_help},
};
// clang-format on

constexpr const MenuRow* row_of(int id) {
    return std::find_if(std::begin(rows), std::end(rows),
                        [id](const MenuRow& row) { return row.part == item && row.id == id; });
}

// By row, so that every item has one.
constinit std::array<bool, std::size(rows)> marks{};

void mark(int id, bool marked) {
    marks[static_cast<std::size_t>(row_of(id) - std::begin(rows))] = marked;
    mark_menu_item(id, marked);
}

/// Marks the item `chosen` of `count` ones from `first`, and takes the marks of the others.
void mark_one(int first, int count, int chosen) {
    for (int i = 0; i < count; ++i)
        mark(first + i, i == chosen);
}

}  // namespace

std::span<const MenuRow> menu_rows() { return rows; }

std::span<const Shortcut> shortcuts() { return keys; }

bool is_menu_item(int id) { return row_of(id) != std::end(rows); }

void menu_mark_view() {
    mark_one(item_zoom, max_menu_zoom, view_zoom - 1);
    mark(item_rotate, view_rotated);
    mark(item_frame, show_frame);
    mark(item_on_top, always_on_top);
    mark(item_panel, ports_opened());
    mark_one(item_model, custom_model + 1, skin_model);
}

void menu_mark_port() { mark_one(item_port, max_com_ports + 1, com_port.load()); }

void menu_mark_baud() {
    const auto found = std::ranges::find(line_speeds, com_baud.load());
    mark_one(item_baud, std::ssize(line_speeds), static_cast<int>(found - line_speeds.begin()));
}

void menu_mark_switches() {
    mark(item_protocol, protocol_on.load());
    mark(item_beep, beep_on.load());
}

bool menu_marked(int id) {
    const MenuRow* const row = row_of(id);
    return row != std::end(rows) && marks[static_cast<std::size_t>(row - std::begin(rows))];
}

}  // namespace orvanel
