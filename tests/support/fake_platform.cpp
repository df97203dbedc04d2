#include "tests/support/fake_platform.h"

#include "seam/platform.h"

namespace orvanel {

FakePlatform fake_platform{};
constinit std::atomic<long> firmware_wakes{0};

void fresh_platform() { fake_platform = {}; }

void sleep_ms(int ms) {
    fake_platform.slept_ms += ms;
    if (fake_platform.on_sleep) fake_platform.on_sleep();
}

void sleep_until_woken(int ms) {
    ++fake_platform.idle_sleeps;
    sleep_ms(ms);
}

void wake_firmware() { ++firmware_wakes; }

void spend_byte_time() {
    if (++fake_platform.bytes_spent == fake_platform.byte_alarm && fake_platform.on_byte_alarm)
        fake_platform.on_byte_alarm();
}

}  // namespace orvanel
