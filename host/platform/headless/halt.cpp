#include "host/platform/headless/halt.h"

#include "host/requests/main_requests.h"
#include "seam/platform.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace orvanel {

namespace {

// Each side writes its own word and then reads the other's, so that never both go on.
constinit std::atomic<bool> halt_wanted{false};  // written by the main thread
constinit std::atomic<bool> stands{false};       // written by firmware_thread

constexpr std::chrono::microseconds look_step{50};

}  // namespace

void halt_firmware() {
    halt_wanted.store(true);
    while (!stands.load()) {
        serve_main_requests();
        std::this_thread::sleep_for(look_step);
    }
}

void resume_firmware() {
    halt_wanted.store(false);
    halt_wanted.notify_one();
}

void firmware_sleeps() { stands.store(true); }

void firmware_wakes() {
    for (;;) {
        stands.store(false);
        if (!halt_wanted.load()) return;
        stands.store(true);
        halt_wanted.wait(true);
    }
}

void firmware_took_byte() {
    if (!halt_wanted.load(std::memory_order_relaxed)) return;
    firmware_sleeps();
    firmware_wakes();
}

}  // namespace orvanel
