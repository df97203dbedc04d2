#include "tests/support/raster_support.h"

#include "firmware/raster/blit.h"
#include "firmware/raster/line.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"
#include "firmware/raster/screen_store.h"
#include "tests/support/fake_platform.h"

namespace orvanel {

void fresh_raster() {
    fresh_platform();
    fake_platform.record_paints = true;
    power_on_display();
    power_on_pen();
    power_on_store();
    terminal_on = true;
    draw_area = dirty_area = whole_screen;
    graphics_planes = {};
    terminal_plane = {};
    store_slots = {};
    staging_buffer = {};
    flash_attr = flash_none;
    select_graphics_planes();
    refresh_all();
    fake_platform.painted.clear();
}

std::string dots(const std::uint8_t* plane, DrawArea area) {
    std::string text = "\n";
    for (int y = area.y1; y <= area.y2; ++y) {
        for (int x = area.x1; x <= area.x2; ++x)
            text += plane_get(plane, x, y) ? '#' : '.';
        text += '\n';
    }
    return text;
}

void scribble(std::mt19937& random) {
    const auto noise = [&random](auto& bytes) {
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(random());
    };
    noise(graphics_planes);
    noise(terminal_plane);
    for (ScreenStore& slot : store_slots)
        noise(slot.buffer);
}

int pick(std::mt19937& random, int low, int high) {
    return std::uniform_int_distribution<int>{low, high}(random);
}

}  // namespace orvanel
