#include "firmware/touch/opener.h"

#include "base/bytes.h"
#include "firmware/core/ground/draw_area.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/border.h"
#include "firmware/raster/refresh.h"
#include "firmware/store/ground/macro.h"
#include "firmware/text/layout.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/codes.h"
#include "firmware/touch/look.h"
#include "firmware/touch/menu.h"
#include "firmware/touch/menu_definitions.h"
#include "link/ground/answers.h"

#include <array>
#include <span>

namespace orvanel {

namespace {

constinit bool menu_auto_open = false;  // an opener unfolds its list at once
constinit bool menu_pending = false;    // the host has yet to answer a press on an opener

/// Reads direction, label and rows of a definition. What the buffer can't hold is taken from the
/// stream and dropped.
void read_menu_text(MenuBox& menu) {
    menu.direction = 'U';
    menu.items_text = 0;
    std::size_t length = 0;
    bool cut = false;
    std::uint8_t b = read_byte();
    if (b == 'U' || b == 'O' || b == 'L' || b == 'R') {
        menu.direction = b;
        b = read_byte();
    }
    for (; !ends_text(b); b = read_byte()) {
        if (length == menu_text_size - 1) {
            cut = true;
            continue;
        }
        const bool splits = b == '|' && menu.items_text == 0;  // also after a backslash
        menu.text[length++] = splits ? std::uint8_t{0} : b;
        if (splits) menu.items_text = static_cast<std::uint16_t>(length);
    }
    menu.text[length] = 0;
    if (cut) remark(Remark::text_cut);
}

void drop_text() {
    while (!ends_text(read_byte())) {
    }
}

/// Unfolds the list of the opener in row `index`, which stays inverted as long as it is open.
void open_touch_menu(int index) {
    // A waiting request may name a row that another area has overwritten.
    if (touch_area(index).type != AreaType::opener) return;
    // The closing may move the opener; the list's own row may overwrite it.
    area_in_hand = low8(index + 1);
    const std::uint8_t slot = touch_area(index).state;
    if (slot == no_menu_slot) return;
    close_menu();
    const TouchArea& opener = touch_area(area_in_hand - 1);
    invert_touch_area(area_in_hand - 1);
    menu_selection = 0;
    const MenuBox& menu = menu_defs[slot];
    run_cursor = std::span{menu.text}.subspan(menu.items_text);
    open_box(StringSource::memory, &opener);
    if (menu_items == 0) {
        open_menu_slot = no_menu_slot;
        return;
    }
    TouchArea& list = new_touch_area();
    list.type = AreaType::list;
    list.up_code = menu.list_code;
    set_rectangle(list, list_rectangle());
    open_menu_slot = slot;
    add_touch_area();
}

/// Opens the list of the opener in hand, or asks the host first.
void unfold_opener() {
    const int index = area_in_hand - 1;
    if (touch_area(index).state == no_menu_slot) return;
    if (menu_auto_open) {
        open_touch_menu(index);
    } else {
        answer_packet('T', {});
        menu_pending = true;
    }
}

/// The codes of the opener in hand and of the one pressed last, 0 if its row is gone.
std::uint8_t down_code_in_hand() {
    return area_in_hand == 0 ? std::uint8_t{0} : touch_area(area_in_hand - 1).down_code;
}
std::uint8_t up_code_of_opener() {
    return menu_opener == no_opener ? std::uint8_t{0} : touch_area(menu_opener).up_code;
}

}  // namespace

void power_on_opener() {
    menu_auto_open = true;
    menu_pending = false;
}

void press_opener(int index) {
    area_in_hand = low8(index + 1);
    std::uint8_t code = 0;
    if (open_menu_slot == no_menu_slot) {
        close_menu();
        unfold_opener();
        code = down_code_in_hand();
    } else {
        code = up_code_of_opener();
        close_menu();
        if (menu_opener != area_in_hand - 1) {
            unfold_opener();
            const std::uint8_t down_code = down_code_in_hand();
            if (down_code != 0 && !start_macro_by_touch(touch_macro_table, down_code)) {
                // The closed list's code goes out first.
                if (code != 0) fire_touch_code(code);
                code = 0;
                answer_packet('A', std::array{down_code});
            }
        }
    }
    menu_opener = low8(area_in_hand - 1);
    if (code != 0) fire_touch_code(code);
}

void choose_from_list(std::uint8_t base) {
    close_menu();
    const std::uint8_t code = low8(base - 1 + menu_selection);
    if (base != 0 && !start_macro_by_touch(menu_macro_table, code))
        answer_packet('N', std::array{code});
    menu_selection = 0;
}

void define_touch_menu() {
    const std::uint8_t down_code = params[0];
    const std::uint8_t up_code = params[1];
    const std::uint8_t list_code = params[2];
    const std::uint8_t slot = free_slot();
    if (slot == no_menu_slot) {
        remark(Remark::menus_full);
        return drop_text();
    }
    TouchArea& opener = new_touch_area();
    MenuBox& menu = menu_defs[slot];
    read_menu_text(menu);
    menu.list_code = list_code;
    opener.type = AreaType::opener;
    opener.state = menu.items_text == 0 ? no_menu_slot : slot;
    set_rectangle(opener, draw_area);
    opener.down_code = down_code;
    opener.up_code = up_code;
    opener.frame = draw_border(touch_border, link_replace);
    run_cursor = menu.text;
    draw_key_label(opener, StringSource::memory);
    dirty_area = rectangle_of(opener);
    refresh_dirty();
    add_touch_area();
}

void set_menu_opening() {
    const int mode = masked(params[0], 3);
    if (mode < 2) menu_auto_open = mode == 1;
    if (!menu_pending || mode == 0) return;
    // A request whose opener is gone is dropped.
    if (menu_opener != no_opener) open_touch_menu(menu_opener);
    menu_pending = false;
}

}  // namespace orvanel
