#include "firmware/touch/menu.h"

#include "base/bytes.h"
#include "firmware/core/ground/draw_area.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/border.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"
#include "firmware/raster/screen_store.h"
#include "firmware/store/ground/macro.h"
#include "firmware/text/font.h"
#include "firmware/text/layout.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/look.h"
#include "firmware/touch/tracking.h"
#include "link/ground/answers.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <span>

namespace orvanel {

constinit std::uint8_t menu_items = 0;
constinit std::uint8_t menu_selection = 0;
constinit std::uint8_t open_menu_slot = 0;
constinit std::uint8_t menu_opener = 0;

namespace {

constexpr std::size_t menu_text_size = 256;  // bytes, terminators included

/// A definition of a touch menu. `text` holds the opener's label and behind it, from items_text on,
/// the row texts, each of the two ended by a zero.
struct MenuBox {
    std::uint8_t direction;    // 'U', 'O', 'L' or 'R': under, over, to the left or the right
    std::uint8_t list_code;    // of row 1, 0: a choice is not reported
    std::uint16_t items_text;  // offset in `text`; 0: the slot is free
    std::array<std::uint8_t, menu_text_size> text;
};

constinit std::array<MenuBox, 8> menu_defs{};

/// A rectangle in the making: corners inclusive, maybe empty or off the glass.
struct Box {
    int x1, y1, x2, y2;
};

constinit std::uint8_t menu_pitch = 0;     // dots a row; wraps at 8 bits
constinit std::uint8_t menu_rotation = 0;  // of the open box, whatever menu_style says by now
constinit Box menu_inner{};                // the open box less its frame
constinit bool menu_auto_open = false;     // an opener unfolds its list at once
constinit bool menu_pending = false;       // the host has yet to answer a press on an opener

/// The text block of a box: along its rows and across them, in dots.
struct Extent {
    int w, h;
};

bool ends_text(std::uint8_t b) { return b == 0 || b == '\n' || b == '\r'; }

/// The first free slot, no_menu_slot if there is none.
std::uint8_t free_slot() {
    const auto* found =
        std::ranges::find_if(menu_defs, [](const MenuBox& menu) { return menu.items_text == 0; });
    return found == menu_defs.end() ? no_menu_slot : low8(found - menu_defs.begin());
}

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
        const bool splits = b == '|' && menu.items_text == 0;  // also behind a backslash
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

/// A box at x, y, its upper left corner, or its lower left one when it is turned. What doesn't fit
/// is cut.
Box box_at_point(int x, int y, Extent text) {
    if (menu_rotation == 0)
        return {x, y, std::min(x + text.w + 5, last_x), std::min(y + text.h + 1, last_y)};
    return {x, std::max(y - text.w - 5, 0), std::min(x + text.h + 1, last_x), y};
}

/// A box beside its opener, moved so that it fits.
Box box_at_opener(const TouchArea& o, std::uint8_t direction, Extent text) {
    const auto [w, h] = text;
    const int cx = std::max(o.x1 - h / 2 + (o.x2 - o.x1) / 2, 0);
    const int cy = std::max(o.y1 - h / 2 + (o.y2 - o.y1) / 2, 0);
    Box box{};
    if (menu_rotation == 0) {
        switch (direction) {
        case 'U':
            box = {o.x1, std::min(o.y2 + 1, last_y), 0, 0};
            break;
        case 'O':
            box = {o.x1, std::max(o.y1 - h - 2, 0), 0, 0};
            break;
        case 'L':
            box = {std::max(o.x1 - w - 6, 0), cy, 0, 0};
            break;
        default:
            box = {std::min(o.x2 + 1, last_x), cy, 0, 0};
            break;
        }
        box.x2 = box.x1 + w + 5;
        box.y2 = box.y1 + h + 1;
        if (box.x2 > last_x) box.x2 = last_x, box.x1 = std::max(234 - w, 0);
        if (box.y2 > last_y) box.y2 = last_y, box.y1 = std::max(126 - h, 0);
        return box;
    }
    switch (direction) {
    case 'U':
        box = {std::min(o.x2 + 1, last_x), 0, 0, o.y2};
        break;
    case 'O':
        box = {std::max(o.x1 - h - 2, 0), 0, 0, o.y2};
        break;
    case 'L':
        box = {cx, 0, 0, std::min(o.y2 + 6 + w, last_y)};
        break;
    default:
        box = {cx, 0, 0, std::max(o.y1 - 1, 0)};
        break;
    }
    box.x2 = box.x1 + h + 1;
    box.y1 = box.y2 - w - 5;
    if (box.x2 > last_x) box.x2 = last_x, box.x1 = std::max(238 - h, 0);
    if (box.y1 < 0) box.y1 = 0, box.y2 = std::min(w + 5, last_y);
    return box;
}

DrawArea area_of(const Box& box) { return {box.x1, low8(box.y1), box.x2, low8(box.y2)}; }

/// Inverts the band of row n inside the box. A row off the glass is clamped to its edge.
void highlight_row(int n) {
    const int start = menu_pitch * (n - 1), end = start + menu_pitch - 1;
    Box band = menu_inner;
    if (menu_rotation == 0) {
        band.y1 = std::min(menu_inner.y1 + start, last_y);
        band.y2 = std::min(menu_inner.y1 + end, last_y);
    } else {
        band.x1 = std::min(menu_inner.x1 + start, last_x);
        band.x2 = std::min(menu_inner.x1 + end, last_x);
    }
    draw_area = area_of(band);
    both_planes = true;
    fill_area(link_invert, pattern_solid);
    refresh_area();
}

void draw_rows(const Box& box) {
    const int gap = menu_font.line_gap;
    const int x = menu_rotation == 0 ? box.x1 + 4 : box.x1 + 1 + gap / 2;
    const int y = menu_rotation == 0 ? box.y1 + 1 + gap / 2 : box.y2 - 4;
    draw_area.x1 = std::clamp(x, 0, last_x);
    draw_area.y1 = low8(std::clamp(y, 0, last_y));
    draw_unflashed_string('L');
}

/// Opens a box with the rows of the source, beside the opener if there is one, else at x1, y1 of
/// draw_area. menu_items stays 0 if there is nothing to show.
void open_box(StringSource source, const TouchArea* opener) {
    active_font = &menu_font;
    active_style = &menu_style;
    both_planes = true;
    layout_string(source, false);
    menu_items = line_count;
    if (menu_items == 0) return;
    if (menu_selection > menu_items) remark(Remark::clamped, menu_selection, menu_items);
    menu_selection = std::min(menu_selection, menu_items);
    menu_rotation = menu_style.rotation;
    menu_pitch = low8(menu_font.height * menu_style.zoom_y + menu_font.line_gap);

    const Extent text{max_width, menu_items * menu_pitch};
    const Box box = opener == nullptr
                        ? box_at_point(draw_area.x1, draw_area.y1, text)
                        : box_at_opener(*opener, menu_defs[opener->state].direction, text);
    menu_inner = {box.x1 + 1, box.y1 + 1, box.x2 - 1, box.y2 - 1};
    if (menu_inner.x1 > menu_inner.x2 || menu_inner.y1 > menu_inner.y2) {
        menu_items = 0;
        return;
    }
    draw_area = area_of(box);
    store_area(menu_slot);
    draw_box(pattern_clear);
    draw_rows(box);
    if (menu_selection != 0) highlight_row(menu_selection);
    dirty_area = area_of(box);
    refresh_dirty();
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
    set_rectangle(list, area_of(menu_inner));
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

void remove_list_area() {
    for (int i = area_count - 1; i >= 0; --i) {
        if (touch_area(i).type != AreaType::list) continue;
        remove_touch_area(i, false);
        return;
    }
}

}  // namespace

void power_on_menu() {
    menu_items = 0;
    menu_selection = 0;
    menu_opener = no_opener;
    open_menu_slot = no_menu_slot;
    menu_auto_open = true;
    menu_pending = false;
    for (MenuBox& menu : menu_defs)
        menu.items_text = 0;
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

int menu_row_at_touch() {
    assert(menu_pitch > 0);
    return (menu_rotation == 0 ? cur_y - menu_inner.y1 : cur_x - menu_inner.x1) / menu_pitch + 1;
}

void set_menu_selection(int n) {
    if (menu_items == 0 || n < 1 || n > menu_items || n == menu_selection) return;
    if (menu_selection != 0) highlight_row(menu_selection);
    highlight_row(n);
    menu_selection = low8(n);
}

void close_menu() {
    if (menu_items == 0) return;
    const auto x1 = draw_area.x1;
    const auto y1 = draw_area.y1;
    const ScreenStore& background = store_slots[menu_slot];
    draw_area.x1 = background.x;
    draw_area.y1 = background.y;
    restore_area(menu_slot);
    menu_items = 0;
    if (open_menu_slot != no_menu_slot) {
        if (menu_opener != no_opener) invert_touch_area(menu_opener);
        open_menu_slot = no_menu_slot;
        remove_list_area();
    }
    draw_area.x1 = x1;
    draw_area.y1 = y1;
}

void free_menu_slot(std::uint8_t slot) {
    if (slot != no_menu_slot) menu_defs[slot].items_text = 0;
}

void define_touch_menu() {
    read_rect();
    const std::uint8_t down_code = read_param();
    const std::uint8_t up_code = read_param();
    const std::uint8_t list_code = read_param();
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

void open_menu_box() {
    close_menu();
    menu_selection = params[0];
    open_box(StringSource::stream, nullptr);
}

void close_menu_command() {
    close_menu();
    menu_selection = 0;
}

void send_menu_selection() {
    close_menu();
    answer_packet('N', std::array{menu_selection});
    menu_selection = 0;
}

void start_menu_selection() {
    close_menu();
    if (menu_selection != 0) start_macro(menu_macro_table, low8(params[0] + menu_selection - 1));
    menu_selection = 0;
}

void next_menu_row() { set_menu_selection(menu_selection + 1); }

void previous_menu_row() {
    set_menu_selection(menu_selection == 0 ? menu_items : menu_selection - 1);
}

void set_menu_opening() {
    const int mode = masked(params[0], 3);
    if (mode < 2) menu_auto_open = mode == 1;
    if (!menu_pending || mode == 0) return;
    // A request whose opener is gone is dropped.
    if (menu_opener != no_opener) open_touch_menu(menu_opener);
    menu_pending = false;
}

void set_menu_rotation() { menu_style.rotation = masked(params[0], 1); }

void set_menu_zoom() {
    menu_style.zoom_x = params[0];
    menu_style.zoom_y = params[1];
}

}  // namespace orvanel
