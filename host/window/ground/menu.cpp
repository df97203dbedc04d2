#include "host/window/ground/menu.h"

#include "host/program/settings.h"
#include "host/window/ground/ports_panel.h"
#include "link/ground/port.h"
#include "link/roof/com_port.h"
#include "seam/window_system.h"

#include <algorithm>
#include <iterator>

namespace orvanel {

namespace {

using enum MenuPart;

// clang-format off
constexpr MenuRow rows[]{
    {submenu,   0,   "&File"},
    {submenu,   0,   "&Reset"},
    {item,      110, "&PowerOn\tCtrl+R"},
    {item,      111, "&Hardware"},
    {item,      112, "&Watchdog"},
    {item,      113, "&BrwonOut"},  // the module's own name for it
    {end,       0,   ""},
    {item,      130, "&Demo"},
    {item,      140, "&Open\tCtrl+O"},
    {separator, 0,   ""},
    {item,      150, "&BMP->Clipboard\tCtrl+C"},
    {separator, 0,   ""},
    {item,      160, "Glas &Terminal\tCtrl+T"},
    {separator, 0,   ""},
    {item,      170, "E&xit\tAlt+F4"},
    {end,       0,   ""},
    {submenu,   0,   "&View"},
    {item,      210, "&Normal\tCtrl+1"},
    {item,      211, "Zoom &2x\tCtrl+2"},
    {item,      212, "Zoom &3x\tCtrl+3"},
    {separator, 0,   ""},
    {item,      220, "Vertical 90 &degree\tCtrl+D"},
    {item,      230, "Show &Window\tCtrl+W"},
    {item,      240, "Always &On Top\tCtrl+A"},
    {separator, 0,   ""},
    {item,      250, "Out &Ports\tCtrl+Y"},
    {separator, 0,   ""},
    {item,      270, "Orvanel42&B-Q\tCtrl+B"},
    {item,      271, "Orvanel42&J-Q\tCtrl+J"},
    {item,      272, "Orvanel42J-Q&R\tCtrl+M"},
    {item,      273, "Orvanel42-Cus&tom\tCtrl+U"},
    {end,       0,   ""},
    {submenu,   0,   "&Options"},
    {submenu,   0,   "&COM"},
    {item,      310, "&None"},
    {item,      311, "COM&1"},
    {item,      312, "COM&2"},
    {item,      313, "COM&3"},
    {item,      314, "COM&4"},
    {item,      315, "COM&5"},
    {item,      316, "COM&6"},
    {item,      317, "COM&7"},
    {item,      318, "COM&8"},
    {end,       0,   ""},
    {submenu,   0,   "&Baudrate"},
    {item,      320, "  &1200"},
    {item,      321, "  &2400"},
    {item,      322, "  &4800"},
    {item,      323, "  &9600"},
    {item,      324, " 1920&0"},
    {item,      325, " 3&8400"},
    {item,      326, " 5&7600"},
    {item,      327, "11&5200"},
    {end,       0,   ""},
    {separator, 0,   ""},
    {item,      330, "&Pactlink"},
    {separator, 0,   ""},
    {item,      340, "&Touch-Beep"},
    {end,       0,   ""},
    {submenu,   0,   "&Help"},
    {item,      510, "&Overview\tShift+F1"},
    {separator, 0,   ""},
    {item,      520, "&About"},
    {end,       0,   ""},
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
    const auto* const found = std::ranges::find(menu_bauds, com_baud.load());
    mark_one(item_baud, std::ssize(menu_bauds), static_cast<int>(found - menu_bauds.begin()));
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
