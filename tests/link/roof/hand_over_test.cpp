// Ports change hands between the threads while bytes run in both directions: on devices that see
// who uses them when.

#include "firmware/core/ground/requests.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"
#include "link/roof/com_port.h"
#include "link/roof/link_thread.h"
#include "tests/support/fake_platform.h"
#include "tests/support/stream.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <random>
#include <semaphore>
#include <thread>

namespace orvanel {

namespace {

constexpr int max_lines = 8192;
constexpr int ports = 4;  // the last two stand for one device
constexpr std::int32_t fast = 2'000'000;

enum class Use : std::uint8_t { never, open, closed };

std::array<std::atomic<Use>, max_lines> lines{};
std::array<std::atomic<int>, ports + 1> line_of_device{};
std::atomic<int> lines_opened{0};
std::atomic<int> lines_closed{0};
std::atomic<int> wrong_uses{0};
std::atomic<int> operations{0};
std::atomic<int> rts_raised{0};
std::atomic<int> rts_dropped{0};
std::atomic<int> waits_begun{0};
std::atomic<int> waits_run_out{0};  // those that only a wake is to end
std::counting_semaphore<1'000'000> link_wake{0};
std::atomic<bool> woken{false};

int device_of(int port) { return port == ports ? ports - 1 : port; }

/// Each operation of link_thread: on an open line, and a few of them with a fault.
bool fails(int line) {
    if (lines[static_cast<std::size_t>(line)] != Use::open) ++wrong_uses;
    return ++operations % 97 == 0;
}

}  // namespace

std::int64_t clock_ms() {
    using std::chrono::milliseconds;
    return std::chrono::duration_cast<milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

int serial_open(int port, std::int32_t /*baud*/) {
    const int line = lines_opened.load() + 1;
    int free_device = 0;
    auto& device = line_of_device[static_cast<std::size_t>(device_of(port))];
    // A port that was given up may be opened again at once, another one on its device may not.
    const bool mine = port < ports - 1;
    if (!device.compare_exchange_strong(free_device, line) && !mine) return 0;
    device = line;
    lines[static_cast<std::size_t>(line)] = Use::open;
    return ++lines_opened;
}

void serial_close(int line) {
    if (lines[static_cast<std::size_t>(line)].exchange(Use::closed) != Use::open) ++wrong_uses;
    for (auto& device : line_of_device) {
        int held = line;
        device.compare_exchange_strong(held, 0);
    }
    ++lines_closed;
}

bool serial_set_baud(int line, std::int32_t /*baud*/) { return !fails(line); }

void serial_set_rts(int line, bool on) {
    if (!fails(line)) ++(on ? rts_raised : rts_dropped);
}

int serial_cts(int line) { return fails(line) ? -1 : operations % 13 == 0 ? 1 : 0; }

int serial_queued_in(int line) { return fails(line) ? -1 : 100; }

int serial_queued_out(int line) { return fails(line) ? -1 : 0; }

int serial_read(int line, std::span<std::uint8_t> into) {
    if (fails(line)) return -1;
    // Frames and plain bytes: whichever the module speaks, some of it means something.
    constexpr std::array<std::uint8_t, 10> pattern{0x11, 2, 'A', 'B', 0x96, 0x12, 1, 'S', 0x66, 0};
    for (std::size_t i = 0; i < into.size(); ++i)
        into[i] = pattern[i % pattern.size()];
    return static_cast<int>(into.size());
}

int serial_write(int line, std::span<const std::uint8_t> data) {
    if (fails(line)) return -1;
    return static_cast<int>(operations % 7 == 0 ? data.size() / 2 : data.size());
}

void wait_for_line(int /*line*/, LineEvent /*event*/, int ms) {
    // An idle wait of a second lasts a minute here: then nothing but a wake can have ended it.
    const bool idle = ms >= 1000;
    ++waits_begun;
    const int limit_ms = idle ? 60'000 : ms;
    if (link_wake.try_acquire_for(std::chrono::milliseconds{limit_ms}))
        woken = false;
    else if (idle)
        ++waits_run_out;
}

void wake_link() {
    if (!woken.exchange(true)) link_wake.release();
}

namespace {

void run_firmware_side() {
    std::mt19937 random{1};
    while (!shutdown_requested) {
        for (int i = 0; i < 500; ++i)
            rx_pipe_get();
        tx_pipe_put_block(std::vector<std::uint8_t>(random() % 500, 'x'));
        if (random() % 8 == 0) com_set_baud(fast + static_cast<std::int32_t>(random() % 2));
        if (random() % 16 == 0) power_on_link();
        if (random() % 16 == 0) power_on_pipes();
        std::this_thread::yield();
    }
}

}  // namespace

TEST(HandOver, a_thousand_changes_lose_no_line_and_touch_none_that_is_closed) {
    constexpr int changes = 1000;
    fresh_platform();
    com_baud = fast;
    com_port = 0;
    tick_enabled = true;
    std::thread link(run_link), firmware(run_firmware_side);
    std::mt19937 random{2};
    for (int i = 0; i < changes; ++i) {
        com_select(static_cast<int>(random() % (ports + 1)), fast);
        if (random() % 4 == 0) choose_protocol(random() % 2 == 0);
        if (random() % 4 == 0) tick_frame_timeout();
        // Now and then link_thread gets time to use what it was given.
        const int enough = operations + static_cast<int>(random() % 2 * 500);
        while (com_port > 0 && operations < enough)
            std::this_thread::yield();
    }
    EXPECT_TRUE(fake_platform.messages.empty());
    shutdown_requested = true;
    wake_link();
    link.join();
    firmware.join();
    close_link();
    shutdown_requested = false;
    EXPECT_EQ(wrong_uses, 0);
    EXPECT_EQ(lines_closed, lines_opened);
    EXPECT_GT(lines_opened, changes / 2);
    EXPECT_GT(line_bytes_in, 10'000u);
    EXPECT_GT(line_bytes_out, 10'000u);
}

TEST(HandOver, rts_stays_off_while_the_pipe_is_full_and_comes_back_by_a_reset_alone) {
    const auto eventually = [](const auto& holds) {
        const std::int64_t end = clock_ms() + 60'000;
        while (!holds() && clock_ms() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds{1});
        return holds();
    };
    power_on_pipes();
    choose_protocol(false);
    tick_enabled = true;
    com_select(1, fast);
    std::thread link(run_link);
    const int raised = rts_raised;
    EXPECT_TRUE(eventually([] { return rts_dropped > 0; }));
    const int enough = operations + 500;
    EXPECT_TRUE(eventually([enough] { return operations > enough; }));
    EXPECT_EQ(rts_raised, raised);
    power_on_pipes();
    EXPECT_TRUE(eventually([raised] { return rts_raised > raised; }));
    shutdown_requested = true;
    wake_link();
    link.join();
    close_link();
    shutdown_requested = false;
    com_port = 0;
    power_on_pipes();
}

TEST(HandOver, the_end_comes_at_once_whatever_the_link_waits_for) {
    for (const int port : {0, 1, 2}) {
        com_select(port, fast);
        tick_enabled = port < 2;
        const int before = waits_begun + operations;
        std::thread link(run_link);
        while (waits_begun + operations == before)
            std::this_thread::yield();
        shutdown_requested = true;
        wake_link();
        link.join();
        close_link();
        shutdown_requested = false;
        com_port = 0;
    }
    EXPECT_EQ(waits_run_out, 0);
    EXPECT_EQ(lines_closed, lines_opened);
}

}  // namespace orvanel
