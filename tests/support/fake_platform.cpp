#include "tests/support/fake_platform.h"

#include "host/host_calls.h"
#include "host/platform/platform.h"

namespace orvanel {

FakePlatform fake_platform{};

void fresh_platform() { fake_platform = {}; }

void sleep_ms(int ms) {
    fake_platform.slept_ms += ms;
    if (fake_platform.on_sleep) fake_platform.on_sleep();
}

void sleep_until_input(int ms) { sleep_ms(ms); }

void wake_firmware() {}

void spend_byte_time() {
    if (++fake_platform.bytes_spent == fake_platform.byte_alarm && fake_platform.on_byte_alarm)
        fake_platform.on_byte_alarm();
}

void repaint_display(int x1, int y1, int x2, int y2) {
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
