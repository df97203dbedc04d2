#include "host/window/ground/ports_panel.h"

#include "base/bytes.h"
#include "firmware/core/roof/device.h"
#include "host/ledlib/led.h"
#include "host/program/settings.h"
#include "seam/window_system.h"

#include <cstddef>

namespace orvanel {

namespace {

constinit bool opened = false;
constinit std::array<int, ports_on_panel> ports_leds{};
constinit std::array<bool, ports_on_panel> lit{};

void add_lights() {
    led_init();
    for (std::size_t i = 0; i < ports_leds.size(); ++i)
        ports_leds[i] =
            led_add(ports_panel_window, first_light_x + light_distance * static_cast<int>(i),
                    lights_top, led_circular, led_green, led_dark);
}

}  // namespace

void ports_open() {
    if (opened) return;
    add_lights();
    if (!open_ports_panel({ports_x, ports_y})) {
        led_reset();
        return;
    }
    opened = true;
    ports_show(low8(ports_shown.load()));
    ports_visible = true;
}

void ports_close() {
    if (!opened) return;
    close_ports_panel();
    led_reset();
    opened = false;
    ports_visible = false;
}

bool ports_opened() { return opened; }

void ports_show(std::uint8_t bits) {
    if (!opened) return;
    for (std::size_t i = 0; i < ports_leds.size(); ++i) {
        lit[i] = (bits >> i & 1) != 0;
        led_set_state(ports_leds[i], lit[i] ? led_lit : led_dark);
        led_draw(ports_leds[i]);
    }
}

void ports_moved(int x, int y) {
    ports_x = x;
    ports_y = y;
}

std::optional<std::array<bool, ports_on_panel>> ports_lit() {
    if (!opened) return std::nullopt;
    return lit;
}

}  // namespace orvanel
