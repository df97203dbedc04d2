// The sleeps of the programs that run in real time, and what ends them early. The sleeps are so
// long that a lost wake shows.

#include "base/bytes.h"
#include "firmware/core/ground/requests.h"
#include "firmware/store/ground/eeprom.h"
#include "host/platform/real_time/real_time.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

namespace orvanel {

namespace {

constexpr int long_ms = 20000;

struct RealTime : testing::Test {
    RealTime() { EXPECT_TRUE(open_real_time()); }
    ~RealTime() override {
        close_real_time();
        shutdown_requested = false;
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds{long_ms});
    }
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
};

}  // namespace

TEST_F(RealTime, a_wake_ends_the_running_sleep_or_the_next) {
    real_wake_firmware();
    real_wake_firmware();
    real_sleep_until_woken(long_ms);
    for (int i = 0; i < 500; ++i) {
        std::thread producer(real_wake_firmware);
        real_sleep_until_woken(long_ms);
        producer.join();
    }
}

TEST_F(RealTime, a_wake_ends_one_sleep_only) {
    real_wake_firmware();
    real_sleep_until_woken(long_ms);
    const auto before = std::chrono::steady_clock::now();
    real_sleep_until_woken(20);
    real_wake_firmware();
    real_sleep_ms(20);  // isn't one that input ends
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds{40});
}

TEST_F(RealTime, the_end_cuts_every_sleep_short) {
    std::thread sleeper([] {
        real_sleep_ms(long_ms);
        real_sleep_ms(long_ms);
    });
    stop_module();
    sleeper.join();
    real_sleep_until_woken(long_ms);
}

// The firmware programs as fast as it can while the main thread saves.
TEST(EepromCopy, is_whole_whenever_it_is_taken) {
    eeprom_reset_to(eeprom_small, {});
    std::atomic<bool> done{false};
    std::thread firmware([&done] {
        for (int i = 0; i < 1000; ++i) {
            std::ranges::fill(eeprom_image, low8(i));
            eeprom_leave_copy();
        }
        done = true;
    });
    int torn = 0;
    std::uint8_t last = 0;
    for (bool last_look = false; !last_look;) {
        last_look = done;
        const auto copy = eeprom_take_copy();
        if (copy.empty()) continue;
        last = copy.front();
        torn += std::ranges::count(copy, last) != eeprom_small ? 1 : 0;
    }
    firmware.join();
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(last, low8(999));
    eeprom_reset_to(eeprom_small, {});
}

}  // namespace orvanel
