#include "firmware/touch/tracking.h"

#include "base/bytes.h"
#include "firmware/core/ground/draw_area.h"
#include "firmware/core/ground/tone.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/line.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/bars.h"
#include "firmware/touch/codes.h"
#include "firmware/touch/finger.h"
#include "firmware/touch/keys.h"
#include "firmware/touch/look.h"
#include "firmware/touch/menu.h"
#include "firmware/touch/menu_definitions.h"
#include "firmware/touch/opener.h"
#include "link/ground/answers.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace orvanel {

constinit bool touch_enabled = false;
constinit bool touch_beep = false;

namespace {

constinit std::int32_t prev_x = 0;
constinit std::uint8_t prev_y = 0;
constinit std::int32_t prev_raw_x = 0;  // x + 1 of the sample before, above 0: the finger was down

/// The last place that a draw or a report area has seen.
constinit std::int32_t last_touch_x = 0;
constinit std::uint8_t last_touch_y = 0;

constexpr std::uint8_t touch_tone_ticks = 2;
constexpr int min_move = 2;  // dots on one axis: less is not a move

void find_touch_area() {
    cur_area = 0;
    for (int i = area_count - 1; i >= 0; --i) {
        const TouchArea& area = touch_area(i);
        // The edge dots belong to no area.
        if (area.type == AreaType::none || cur_x <= area.x1 || cur_x >= area.x2 ||
            cur_y <= area.y1 || cur_y >= area.y2)
            continue;
        cur_area = low8(i + 1);
        return;
    }
}

void sound_touch() {
    if (touch_beep) start_beep(touch_tone_ticks);
}

/// The area that the running event works on. The operations that an event calls may remove rows, so
/// its index is asked for again after each.
int index_in_hand() { return area_in_hand - 1; }

void key_event() {
    TouchArea& key = touch_area(index_in_hand());
    if (event_kind == TouchEvent::drag) return;
    const bool press = event_kind == TouchEvent::press;
    if (press) sound_touch();
    const bool was_down = (key.state & 1) != 0;
    key.state = low8((key.state & ~1) | (press ? 1 : 0));
    if (touch_invert && was_down != press) invert_touch_area(index_in_hand());
    const std::uint8_t code = press ? key.down_code : key.up_code;
    if (code != 0) fire_touch_code(code);
}

void switch_event() {
    if (event_kind != TouchEvent::press) return;
    sound_touch();
    const std::uint8_t code = press_switch(index_in_hand());
    if (code != 0) fire_touch_code(code);
}

void bar_event() {
    const std::uint8_t slot = touch_area(index_in_hand()).state;
    if (event_kind == TouchEvent::release) {
        if (bar_send_mode == BarReport::at_release) report_bar(slot);
        return;
    }
    const bool moved = bar_touch_value(slot);
    if (moved && bar_send_mode == BarReport::each_change) report_bar(slot);
}

void keep_touch() {
    last_touch_x = cur_x;
    last_touch_y = cur_y;
}

void draw_event() {
    if (event_kind == TouchEvent::release) return;
    if (event_kind == TouchEvent::press) keep_touch();
    const auto held_link = pen_link, held_width = pen_width, held_height = pen_height;
    pen_link = link_set;
    pen_width = pen_height = touch_area(index_in_hand()).state;
    draw_area = {last_touch_x, last_touch_y, cur_x, cur_y};
    draw_line();
    refresh_dirty();
    pen_link = held_link;
    pen_width = held_width;
    pen_height = held_height;
    keep_touch();
}

void opener_event() {
    if (event_kind != TouchEvent::press) return;
    sound_touch();
    press_opener(index_in_hand());
}

void list_event() {
    if (event_kind == TouchEvent::release)
        choose_from_list(touch_area(index_in_hand()).up_code);
    else
        set_menu_selection(menu_row_at_touch());
}

void trace_event() {
    if (!tracing()) return;
    constexpr std::array<TraceKind, 4> kinds{TraceKind::press, TraceKind::press, TraceKind::drag,
                                             TraceKind::release};  // by TouchEvent
    constexpr std::array<const char*, 8> areas{
        "nothing", "key", "switch", "bar", "draw area", "menu opener", "menu list", "report area"};
    const auto type = area_in_hand == 0 ? AreaType::none : touch_area(index_in_hand()).type;
    trace(kinds[static_cast<std::size_t>(event_kind)], cur_x, cur_y,
          areas[static_cast<std::size_t>(type)]);
}

/// Press and drag tell their place, a release the last of these: its own is the 0 of no finger.
void report_event() {
    constexpr std::array<std::uint8_t, 4> report_kinds{0, 1, 2, 0};  // by TouchEvent
    if (event_kind != TouchEvent::release) keep_touch();
    answer_packet('H', std::array{report_kinds[static_cast<std::size_t>(event_kind)],
                                  low8(last_touch_x), last_touch_y});
}

}  // namespace

void power_on_tracking() {
    touch_enabled = true;
    touch_beep = true;
    wait_release = false;
    prev_raw_x = 0;
    drop_finger_change();
}

void poll_touch() {
    if (!touch_enabled || !finger_changed()) return;
    const auto [sx, sy] = take_finger_sample();
    if (wait_release) {
        if (sx != 0) return;
        wait_release = false;
        prev_area = 0;
        prev_raw_x = 0;
        return;
    }
    if (sx == 0 && prev_raw_x == 0) return;
    event_kind = sx == 0           ? TouchEvent::release
                 : prev_raw_x == 0 ? TouchEvent::press
                                   : TouchEvent::drag;
    draw_area.x1 = prev_x;
    draw_area.y1 = prev_y;
    cur_x = std::clamp(sx - 1, 0, last_x);
    cur_y = low8(std::clamp(sy - 1, 0, last_y));
    find_touch_area();
    if (event_kind != TouchEvent::drag) {
        handle_touch_event();
    } else if (prev_area == cur_area) {
        if (std::abs(prev_x - cur_x) < min_move && std::abs(prev_y - cur_y) < min_move) {
            // Slow motion adds up until it is a move.
            cur_x = prev_x;
            cur_y = prev_y;
        } else {
            handle_touch_event();
        }
    } else {
        // A slide from one area into another: the finger leaves the one and presses the other.
        if (prev_area != 0) {
            event_kind = TouchEvent::release;
            handle_touch_event();
        }
        if (cur_area != 0) {
            event_kind = TouchEvent::press;
            handle_touch_event();
        }
    }
    prev_raw_x = sx;
    prev_area = cur_area;
    prev_x = cur_x;
    prev_y = cur_y;
}

void handle_touch_event() {
    area_in_hand = event_kind == TouchEvent::release ? prev_area : cur_area;
    trace_event();
    if (area_in_hand == 0) return;
    const AreaType type = touch_area(index_in_hand()).type;
    const bool of_menu = type == AreaType::opener || type == AreaType::list;
    if (open_menu_slot != no_menu_slot && !of_menu) return;
    select_graphics_planes();
    switch (type) {
    case AreaType::none:
        return;
    case AreaType::key:
        return key_event();
    case AreaType::toggle:
        return switch_event();
    case AreaType::bar:
        return bar_event();
    case AreaType::draw:
        return draw_event();
    case AreaType::opener:
        return opener_event();
    case AreaType::list:
        return list_event();
    case AreaType::report:
        return report_event();
    }
}

void enable_touch() {
    touch_enabled = masked(params[0], 1) != 0;
    if (cur_area != 0) {
        event_kind = TouchEvent::release;
        prev_area = cur_area;
        handle_touch_event();
    } else if (open_menu_slot != no_menu_slot) {
        close_menu();
        menu_selection = 0;
    }
    prev_raw_x = 0;
    prev_area = 0;
    cur_area = 0;
}

void enable_touch_beep() { touch_beep = masked(params[0], 1) != 0; }

}  // namespace orvanel
