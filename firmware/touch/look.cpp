#include "firmware/touch/look.h"

#include "base/bytes.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/border.h"
#include "firmware/raster/picture.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"
#include "firmware/text/font.h"

#include <algorithm>

namespace orvanel {

constinit std::uint8_t touch_border = 0;
constinit bool touch_invert = false;

namespace {

bool has_two_images(const TouchArea& area) {
    return (area.type == AreaType::key || area.type == AreaType::toggle) && area.state > 1;
}

}  // namespace

void power_on_look() {
    touch_border = 1;
    touch_invert = true;
}

void invert_touch_area(int index) {
    const TouchArea& area = touch_area(index);
    if (area.type == AreaType::none) return;
    draw_area = rectangle_of(area);
    if (has_two_images(area)) {
        draw_key_picture(area.frame, link_invert);
    } else if (area.frame == 0) {
        both_planes = true;
        fill_area(link_invert, pattern_solid);
        refresh_area();
    } else {
        draw_border(area.frame, link_invert);
    }
}

void draw_key_label(TouchArea& area, StringSource source) {
    active_font = &touch_font;
    active_style = &touch_style;
    const std::uint8_t first = layout_string(source, true);
    area.label.length = low8(static_cast<int>(layout_text(area.label.text)));
    const std::uint8_t align = first == 'L' || first == 'R' ? first : std::uint8_t{'C'};

    int x = area.x1 + (area.x2 - area.x1) / 2;
    int y = area.y1 + (area.y2 - area.y1) / 2;
    const int half = (total_height - 1) / 2;
    if (touch_style.rotation == 0) {
        y = std::max(y - half, 0);
        if (align == 'L') x = area.x1;
        if (align == 'R') x = area.x2;
    } else {
        x = std::max(x - half, 0);
        if (align == 'L') y = area.y2;
        if (align == 'R') y = area.y1;
    }
    draw_area.x1 = x;
    draw_area.y1 = low8(y);
    draw_unflashed_string(align);
}

}  // namespace orvanel
