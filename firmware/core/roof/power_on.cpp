#include "firmware/core/roof/power_on.h"

#include "firmware/core/ground/backlight.h"
#include "firmware/core/ground/draw_area.h"
#include "firmware/core/ground/requests.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/roof/device.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/line.h"
#include "firmware/raster/picture.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"
#include "firmware/raster/store_slots.h"
#include "firmware/store/ground/macro.h"
#include "firmware/store/roof/timers.h"
#include "firmware/text/font.h"
#include "firmware/text/layout.h"
#include "firmware/text/terminal.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/bars.h"
#include "firmware/touch/finger.h"
#include "firmware/touch/keys.h"
#include "firmware/touch/look.h"
#include "firmware/touch/menu.h"
#include "firmware/touch/menu_definitions.h"
#include "firmware/touch/opener.h"
#include "firmware/touch/tracking.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"
#include "seam/platform.h"

namespace orvanel {

namespace {

void clear_planes() {
    draw_area = whole_screen;
    select_graphics_planes();
    fill_area(link_replace, pattern_clear);
    select_terminal_plane();
    fill_area(link_replace, pattern_clear);
}

}  // namespace

void power_on_defaults() {
    power_on_backlight();
    power_on_display();
    power_on_link();
    power_on_pipes();
    power_on_pen();
    power_on_store();
    power_on_fonts();
    power_on_styles();
    power_on_pictures();
    draw_area = whole_screen;
    terminal_init();
    select_graphics_planes();
    power_on_macros();
    power_on_timers();
    power_on_device();
    power_on_menu_definitions();
    power_on_menu();
    power_on_opener();
    power_on_areas();
    power_on_tracking();
    power_on_look();
    power_on_bars();
    // Last, so that a request that comes in while the defaults are written has no further effect.
    restart_requested.store(false);
}

void cold_start() {
    cold_start_requests();
    cold_start_terminal();
    cold_start_fonts();
    cold_start_store();
    lift_finger();
    cold_start_areas();
    cold_start_keys();
    cold_start_bars();
}

void reset_cycle() {
    trace(TraceKind::reset, reset_kind.load());
    com_restore_baud();
    wake_link();
    power_on_defaults();
    clear_planes();
    refresh_all();
    run_macro(power_on_macro_table, reset_kind.load());
    tick_enabled.store(true);
}

}  // namespace orvanel
