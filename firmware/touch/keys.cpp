#include "firmware/touch/keys.h"

#include "base/bytes.h"
#include "firmware/core/ground/draw_area.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/border.h"
#include "firmware/raster/picture.h"
#include "firmware/raster/refresh.h"
#include "firmware/text/layout.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/look.h"
#include "firmware/touch/removal.h"
#include "link/ground/answers.h"

#include <array>

namespace orvanel {

constinit std::uint8_t switch_group = 0;

namespace {

enum class Shape : bool { rectangle, picture };

bool has_code(const TouchArea& area, std::uint8_t code) {
    return area.down_code == code || area.up_code == code;
}

bool is_on(const TouchArea& area) { return (area.state & 1) != 0; }

/// Draws picture `n` of the image at x1, y1 of draw_area as the area's look. Without such a picture
/// the area is that one dot: no finger hits it, and it can be removed.
void take_picture(TouchArea& area, std::uint8_t n) {
    draw_area.x2 = draw_area.x1;
    draw_area.y2 = draw_area.y1;
    if (draw_key_picture(n, link_replace) != KeyPicture::two_images) return;
    area.state = 2;
    area.frame = n;
}

void define(AreaType type, Shape shape) {
    TouchArea& area = new_touch_area();
    if (shape == Shape::rectangle) {
        read_rect();
    } else {
        read_point1();
        const std::uint8_t picture = read_param();
        take_picture(area, picture);
        area.label.picture = static_cast<std::uint16_t>(picture + 1);
    }
    set_rectangle(area, draw_area);
    area.type = type;
    area.down_code = read_param();
    area.up_code = read_param();
    if (type == AreaType::toggle) area.group = switch_group;
    if (shape == Shape::rectangle) area.frame = draw_border(touch_border, link_replace);
    draw_key_label(area, StringSource::stream);
    dirty_area = rectangle_of(area);
    refresh_dirty();
    add_touch_area();
}

/// An area without a look of its own.
TouchArea& define_bare(AreaType type) {
    TouchArea& area = new_touch_area();
    read_rect();
    set_rectangle(area, draw_area);
    area.type = type;
    return area;
}

void set_on(TouchArea& area, bool on) { area.state = low8((area.state & ~1) | (on ? 1 : 0)); }

/// Switches off all of the group but row `spare`.
void clear_radio_group(std::uint8_t group, int spare) {
    for (int i = area_count - 1; i >= 0; --i) {
        TouchArea& area = touch_area(i);
        if (i == spare || area.type != AreaType::toggle || area.group != group || !is_on(area))
            continue;
        set_on(area, false);
        invert_touch_area(i);
    }
}

void remove_all(bool erase) {
    if (cur_area != 0) take_finger_off(cur_area - 1);
    while (area_count > 0)
        remove_touch_area(area_count - 1, erase);
}

}  // namespace

void cold_start_keys() { switch_group = 0; }

std::uint8_t press_switch(int index) {
    TouchArea& area = touch_area(index);
    if (area.group != 0) {
        if (is_on(area)) return 0;
        clear_radio_group(area.group, index);
    }
    set_on(area, !is_on(area));
    invert_touch_area(index);
    return is_on(area) ? area.down_code : area.up_code;
}

void define_key() { define(AreaType::key, Shape::rectangle); }
void define_picture_key() { define(AreaType::key, Shape::picture); }
void define_switch() { define(AreaType::toggle, Shape::rectangle); }
void define_picture_switch() { define(AreaType::toggle, Shape::picture); }

void define_draw_area() {
    TouchArea& area = define_bare(AreaType::draw);
    area.state = read_param();
    add_touch_area();
}

void define_report_area() {
    define_bare(AreaType::report);
    add_touch_area();
}

void query_radio_group() {
    const std::uint8_t group = params[0];
    std::uint8_t code = 0;
    for (int i = 0; i < area_count && group != 0; ++i) {
        const TouchArea& area = touch_area(i);
        if (area.type == AreaType::toggle && area.group == group && is_on(area))
            code = area.down_code;
    }
    answer_packet('G', std::array{group, code});
}

void query_switch() {
    const std::uint8_t code = params[0];
    std::uint8_t on = 0;
    for (int i = 0; i < area_count; ++i) {
        const TouchArea& area = touch_area(i);
        // The last row that has the code is the one asked for.
        if (area.type == AreaType::toggle && has_code(area, code)) on = area.state & 1;
    }
    answer_packet('X', std::array{code, on});
}

void set_switches() {
    const std::uint8_t code = params[0];
    const bool on = masked(params[1], 1) != 0;
    for (int i = area_count - 1; i >= 0; --i) {
        TouchArea& area = touch_area(i);
        if (area.type != AreaType::toggle || !has_code(area, code) || is_on(area) == on) continue;
        set_on(area, on);
        invert_touch_area(i);
        // Also when it goes off.
        if (area.group != 0) clear_radio_group(area.group, i);
    }
}

void invert_by_code() {
    for (int i = area_count - 1; i >= 0; --i)
        if (has_code(touch_area(i), params[0])) invert_touch_area(i);
}

void remove_by_code() {
    const std::uint8_t code = params[0];
    const bool erase = masked(params[1], 1) != 0;
    if (code == 0)
        remove_all(erase);
    else
        remove_touch_areas([code](const TouchArea& area) { return has_code(area, code); }, erase);
}

void remove_at_point() {
    // Removals that erase move draw_area. Edges count here, where a finger misses them.
    const auto x = draw_area.x1;
    const auto y = draw_area.y1;
    remove_touch_areas(
        [x, y](const TouchArea& area) {
            return area.x1 <= x && x <= area.x2 && area.y1 <= y && y <= area.y2;
        },
        masked(params[0], 1) != 0);
}

void set_touch_border() { touch_border = params[0]; }

void set_touch_invert() {
    const bool inverts = masked(params[0], 1) != 0;
    // A key that is held shows the new way at once.
    if (cur_area != 0 && touch_area(cur_area - 1).type == AreaType::key && inverts != touch_invert)
        invert_touch_area(cur_area - 1);
    touch_invert = inverts;
}

void set_switch_group() { switch_group = params[0]; }

void set_label_rotation() { touch_style.rotation = masked(params[0], 1); }

void set_label_zoom() {
    touch_style.zoom_x = params[0];
    touch_style.zoom_y = params[1];
}

}  // namespace orvanel
