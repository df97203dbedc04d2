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
#include "firmware/touch/finger.h"
#include "firmware/touch/look.h"
#include "firmware/touch/menu_definitions.h"
#include "link/ground/answers.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace orvanel {

constinit std::uint8_t menu_items = 0;
constinit std::uint8_t menu_selection = 0;
constinit MenuText menu_text{};

namespace {

/// A rectangle in the making: corners inclusive, maybe empty or off the glass.
struct Box {
    int x1, y1, x2, y2;
};

constinit std::uint8_t menu_pitch = 0;     // dots a row; wraps at 8 bits
constinit std::uint8_t menu_rotation = 0;  // of the open box, whatever menu_style says by now
constinit Box menu_inner{};                // the open box less its frame

/// The text block of a box: along its rows and across them, in dots.
struct Extent {
    int w, h;
};

// A box has a frame of one dot all around, and along its rows three dots more in front of the text
// and one after it. So its last dot lies this far from its first, beyond the text's extent:
constexpr int more_along = 5;
constexpr int more_across = 1;
constexpr int text_indent = 4;  // from the box's edge to the first dot of a row

/// A box at x, y, its upper left corner, or its lower left one when it is turned. What doesn't fit
/// is cut.
Box box_at_point(int x, int y, Extent text) {
    if (menu_rotation == 0)
        return {x, y, std::min(x + text.w + more_along, last_x),
                std::min(y + text.h + more_across, last_y)};
    return {x, std::max(y - text.w - more_along, 0), std::min(x + text.h + more_across, last_x), y};
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
            box = {o.x1, std::max(o.y1 - 1 - h - more_across, 0), 0, 0};
            break;
        case 'L':
            box = {std::max(o.x1 - 1 - w - more_along, 0), cy, 0, 0};
            break;
        default:
            box = {std::min(o.x2 + 1, last_x), cy, 0, 0};
            break;
        }
        box.x2 = box.x1 + w + more_along;
        box.y2 = box.y1 + h + more_across;
        if (box.x2 > last_x) box.x2 = last_x, box.x1 = std::max(last_x - more_along - w, 0);
        if (box.y2 > last_y) box.y2 = last_y, box.y1 = std::max(last_y - more_across - h, 0);
        return box;
    }
    switch (direction) {
    case 'U':
        box = {std::min(o.x2 + 1, last_x), 0, 0, o.y2};
        break;
    case 'O':
        box = {std::max(o.x1 - 1 - h - more_across, 0), 0, 0, o.y2};
        break;
    case 'L':
        box = {cx, 0, 0, std::min(o.y2 + 1 + w + more_along, last_y)};
        break;
    default:
        box = {cx, 0, 0, std::max(o.y1 - 1, 0)};
        break;
    }
    box.x2 = box.x1 + h + more_across;
    box.y1 = box.y2 - w - more_along;
    if (box.x2 > last_x) box.x2 = last_x, box.x1 = std::max(last_x - more_across - h, 0);
    if (box.y1 < 0) box.y1 = 0, box.y2 = std::min(w + more_along, last_y);
    return box;
}

DrawArea area_of(const Box& box) { return {box.x1, low8(box.y1), box.x2, low8(box.y2)}; }

/// Inverts the band of row n inside the box.
void highlight_row(int n) {
    draw_area = menu_row_rectangle(n);
    both_planes = true;
    fill_area(link_invert, pattern_solid);
    refresh_area();
}

void draw_rows(const Box& box) {
    const int gap = menu_font.line_gap;
    const int x = menu_rotation == 0 ? box.x1 + text_indent : box.x1 + 1 + gap / 2;
    const int y = menu_rotation == 0 ? box.y1 + 1 + gap / 2 : box.y2 - text_indent;
    draw_area.x1 = std::clamp(x, 0, last_x);
    draw_area.y1 = low8(std::clamp(y, 0, last_y));
    draw_unflashed_string('L');
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
}

void open_box(StringSource source, const TouchArea* opener) {
    active_font = &menu_font;
    active_style = &menu_style;
    both_planes = true;
    layout_string(source, false);
    menu_items = line_count;
    if (menu_items == 0) return;
    menu_text.length = static_cast<std::uint16_t>(layout_text(menu_text.text));
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

DrawArea menu_row_rectangle(int n) {
    const int start = menu_pitch * (n - 1), end = start + menu_pitch - 1;
    Box band = menu_inner;
    if (menu_rotation == 0) {
        band.y1 = std::min(menu_inner.y1 + start, last_y);
        band.y2 = std::min(menu_inner.y1 + end, last_y);
    } else {
        band.x1 = std::min(menu_inner.x1 + start, last_x);
        band.x2 = std::min(menu_inner.x1 + end, last_x);
    }
    return area_of(band);
}

DrawArea list_rectangle() { return area_of(menu_inner); }

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

void set_menu_rotation() { menu_style.rotation = masked(params[0], 1); }

void set_menu_zoom() {
    menu_style.zoom_x = params[0];
    menu_style.zoom_y = params[1];
}

}  // namespace orvanel
