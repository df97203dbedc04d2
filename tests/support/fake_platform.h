// fake_platform.h: the platform and the host calls as the tests see them: nothing sleeps or paints,
// everything is counted.

#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

namespace orvanel {

struct PaintedRect {
    int x1, y1, x2, y2;
    friend bool operator==(const PaintedRect&, const PaintedRect&) = default;
};

struct FakePlatform {
    long slept_ms;       // by sleep_ms and sleep_until_woken
    long idle_sleeps;    // calls of sleep_until_woken
    long bytes_spent;    // calls of spend_byte_time
    bool record_paints;  // keep each rectangle in `painted`
    long paints;         // calls of repaint_rect
    std::vector<PaintedRect> painted;
    long colour_changes;
    long beeps;
    long port_shows;
    bool fade_running;
    std::vector<std::string> messages;
    long byte_alarm;  // the count of bytes_spent at which on_byte_alarm runs
    std::function<void()> on_byte_alarm;
    std::function<void()> on_sleep;  // runs in each sleep: where a test lets the world move
};

extern FakePlatform fake_platform;

/// Calls of wake_firmware, from any thread.
extern std::atomic<long> firmware_wakes;

/// Forgets all counts and hooks.
void fresh_platform();

}  // namespace orvanel
