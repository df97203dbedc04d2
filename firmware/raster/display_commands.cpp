// The commands that switch or fill the whole display, and those that make areas flash.

#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"
#include "firmware/raster/rows.h"

namespace orvanel {

namespace {

void fill_display(std::uint8_t mode, std::uint8_t pattern) {
    draw_area = whole_screen;
    fill_area(mode, pattern);
    refresh_all();
}

/// The flash plane of draw_area := the dots of work_plane, those of `turned` the other way round.
void copy_to_flash_plane(std::uint64_t turned) {
    const DrawArea area = on_glass(draw_area);
    for_windows(area.x1, area.x2, [&](const Window& window) {
        for (int y = area.y1; y <= area.y2; ++y) {
            std::uint8_t* at = work_plane + plane_index(8 * window.byte, y);
            change_bytes(flash_plane_of(at),
                         change_of(link_rules[link_replace], load_dots(at) ^ turned, window.mask));
        }
    });
    refresh_area();
}

}  // namespace

void clear_display() { fill_display(link_replace, pattern_clear); }
void set_display() { fill_display(link_replace, pattern_solid); }
void invert_display() { fill_display(link_invert, pattern_solid); }

void display_off() {
    graphic_on = false;
    refresh_all();
}

void display_on() {
    flash_timer.store(flash_period.load());
    graphic_on = true;
    refresh_all();
}

void show_clipboard() {
    clipboard_view = true;
    refresh_all();
}

void show_planes() {
    clipboard_view = false;
    refresh_all();
}

void flash_inverted() { copy_to_flash_plane(all_dots); }
void flash_same() { copy_to_flash_plane(no_dots); }

void flash_pattern() {
    std::uint8_t* plane = work_plane;
    both_planes = false;
    work_plane = flash_plane_of(plane);
    fill_area(link_replace, params[0]);
    work_plane = plane;
    refresh_area();
}

void set_flash_period() {
    const std::uint8_t period = masked(params[0], 15);
    flash_period.store(period);
    flash_timer.store(period);
    // The tick may be turning the phase at this moment: it looks at the period again after that.
    if (period == 0 && flash_phase.exchange(0) == 1) repaint_all();
}

}  // namespace orvanel
