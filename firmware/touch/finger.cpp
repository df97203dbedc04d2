#include "firmware/touch/finger.h"

#include "seam/platform.h"

namespace orvanel {

constinit bool wait_release = false;
constinit TouchEvent event_kind{};
constinit std::int32_t cur_x = 0;
constinit std::uint8_t cur_y = 0;

namespace {

/// The finger as the host last wrote it: x + 1 in the low byte, y + 1 above it, both 0 when it is
/// up, and the flag that it has changed.
constinit std::atomic<std::uint32_t> touch_sample{0};
constexpr std::uint32_t touch_changed = 0x10000;

}  // namespace

void put_finger(int x, int y) {
    touch_sample.store(static_cast<std::uint32_t>(x + 1) | static_cast<std::uint32_t>(y + 1) << 8 |
                       touch_changed);
    wake_firmware();
}

void lift_finger() {
    touch_sample.store(touch_changed);
    wake_firmware();
}

bool finger_changed() {
    return (touch_sample.load(std::memory_order_relaxed) & touch_changed) != 0;
}

bool finger_is_down() {
    return (touch_sample.load(std::memory_order_relaxed) & ~touch_changed) != 0;
}

FingerSample take_finger_sample() {
    const std::uint32_t sample = touch_sample.fetch_and(~touch_changed);
    return {static_cast<int>(sample & 0xFF), static_cast<int>(sample >> 8 & 0xFF)};
}

void drop_finger_change() { touch_sample.fetch_and(~touch_changed); }

}  // namespace orvanel
