// The host calls, for tests of the layers below the host.

#include "seam/host_calls.h"
#include "tests/support/fake_platform.h"

namespace orvanel {

void repaint_rect(int x1, int y1, int x2, int y2) {
    ++fake_platform.paints;
    if (fake_platform.record_paints) fake_platform.painted.push_back({x1, y1, x2, y2});
}

void colours_changed() { ++fake_platform.colour_changes; }

void start_fade_timer() { fake_platform.fade_running = true; }

void stop_fade_timer() { fake_platform.fade_running = false; }

void show_message(std::string_view, std::string_view text) {
    fake_platform.messages.emplace_back(text);
}

void beep() { ++fake_platform.beeps; }

void show_ports() { ++fake_platform.port_shows; }

}  // namespace orvanel
