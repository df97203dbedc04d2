#include "host/skin/view.h"

#include "host/program/settings.h"
#include "host/skin/lcd_colours.h"
#include "host/skin/skin.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace orvanel {

constinit const SkinImage* view_skin = &skin_image;
constinit const Display* view_lcd = &lcd_dib;
constinit const Display* view_lcd_flash = &lcd_dib_flash;
constinit int screen_scale_percent = 100;

void choose_view() {
    view_skin = view_rotated ? &skin_image_rot : &skin_image;
    view_lcd = view_rotated ? &lcd_dib_rot : &lcd_dib;
    view_lcd_flash = view_rotated ? &lcd_dib_rot_flash : &lcd_dib_flash;
}

std::string prepare_view() {
    std::vector<std::uint8_t> skin = builtin_skin();
    if (skin.empty()) return "the built-in skin is damaged";
    if (std::string fault = skin_analyse(std::move(skin)); !fault.empty())
        return "the built-in skin can't be used: " + fault;
    choose_view();
    model_apply();
    return {};
}

int dot_pixels() { return std::max((view_zoom * screen_scale_percent + 50) / 100, 1); }

int window_width() { return static_cast<int>(view_skin->width) * dot_pixels(); }

int window_height() { return static_cast<int>(view_skin->height) * dot_pixels(); }

PixelRect display_pixels(int x1, int y1, int x2, int y2) {
    const SkinRect& area = view_lcd->area;
    const int z = dot_pixels();
    if (view_lcd->rotated != nullptr)
        return {(area.left + last_y - y2) * z, (area.top + x1) * z,
                (area.left + last_y - y1) * z + z, (area.top + x2) * z + z};
    return {(area.left + x1) * z, (area.top + y1) * z, (area.left + x2) * z + z,
            (area.top + y2) * z + z};
}

}  // namespace orvanel
