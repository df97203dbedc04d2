#include "link/feeds/feeds.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"
#include "tests/support/fake_platform.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <numeric>
#include <thread>
#include <vector>

namespace orvanel {
namespace {

class Pipes : public testing::Test {
  protected:
    void SetUp() override {
        fresh_platform();
        power_on_pipes();
        stop_feed();
    }
};

std::vector<std::uint8_t> counting(std::size_t n) {
    std::vector<std::uint8_t> data(n);
    std::iota(data.begin(), data.end(), std::uint8_t{0});
    return data;
}

/// The number of the first `n` bytes got that are not what counting() put, -1 for none.
int first_wrong(std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        if (rx_pipe_get() != static_cast<int>(i % 256)) return static_cast<int>(i);
    return -1;
}

TEST_F(Pipes, the_ring_wraps_and_a_full_one_drops_what_does_not_fit) {
    rx_pipe_put_block(counting(70144));
    EXPECT_EQ(first_wrong(70144), -1);
    EXPECT_EQ(rx_pipe_get(), -1);
    rx_pipe_put_block(counting(pipe_size + 7));
    EXPECT_EQ(rx_count(), pipe_size);
    EXPECT_EQ(first_wrong(pipe_size), -1) << "across the end of the ring";
    EXPECT_EQ(rx_count(), 0);
}

TEST_F(Pipes, rts_comes_back_below_the_low_mark_and_not_at_it) {
    rx_pipe_put_block(counting(low_mark + 1));
    com_rts_off();
    rx_pipe_get();
    EXPECT_EQ(rx_count(), low_mark);
    EXPECT_FALSE(rts_wanted);
    rx_pipe_get();
    EXPECT_TRUE(rts_wanted);
}

TEST_F(Pipes, two_producers_a_consumer_and_clearings_keep_blocks_whole) {
    // Each block is a run of one value with its length in front, so that a torn one shows.
    constexpr int blocks = 2000;
    std::atomic<int> producers{2};
    const auto produce = [&](std::uint8_t value) {
        const std::vector<std::uint8_t> block{3, value, value, value};
        for (int i = 0; i < blocks; ++i) {
            rx_pipe_put_block(block);
            if (i % 16 == 0) std::this_thread::yield();
        }
        --producers;
    };
    std::thread first(produce, std::uint8_t{10}), second(produce, std::uint8_t{20});
    int taken = 0;
    bool torn = false;
    while (producers > 0 || rx_count() > 0) {
        if (rx_count() < 4) continue;
        const int length = rx_pipe_get(), value = rx_pipe_get();
        for (int i = 1; i < length; ++i)
            torn |= rx_pipe_get() != value;
        torn |= length != 3 || (value != 10 && value != 20);
        ++taken;
    }
    first.join();
    second.join();
    EXPECT_FALSE(torn);
    EXPECT_EQ(taken, 2 * blocks);
}

TEST_F(Pipes, a_clearing_from_another_thread_loses_no_count) {
    std::atomic<bool> done{false};
    std::thread clearer([&] {
        while (!done)
            clear_pipe(tx_pipe);
    });
    for (int i = 0; i < 20000; ++i) {
        tx_pipe_put(static_cast<std::uint8_t>(i));
        tx_pipe_get();
        const int held = tx_count();
        ASSERT_TRUE(held >= 0 && held <= pipe_size);
    }
    done = true;
    clearer.join();
}

TEST_F(Pipes, a_feed_moves_chunks_until_the_pipe_is_above_the_high_mark) {
    const auto data = counting(80000);
    rx_pipe_put_block(counting(high_mark));
    start_feed_memory(data);
    drain_feed();
    EXPECT_EQ(rx_count(), high_mark + feed_chunk) << "exactly at the mark one chunk still moves";
    EXPECT_EQ(feed_left(), 80000 - feed_chunk);
    drain_feed();
    EXPECT_EQ(rx_count(), high_mark + feed_chunk) << "above it none does";
    power_on_pipes();
    drain_feed();
    EXPECT_EQ(feed_left(), 80000 - feed_chunk - (high_mark + feed_chunk))
        << "a reset drops the pipe and leaves the feed";
}

TEST_F(Pipes, file_feeds_take_quoted_paths_and_refuse_what_is_no_file) {
    const auto path = std::filesystem::temp_directory_path() / "orvanel feed test.bin";
    const auto data = counting(4001);
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data.data()),
               static_cast<std::streamsize>(data.size()));
    start_feed_file('"' + path.string() + '"');
    EXPECT_EQ(feed_left(), 4001);
    drain_feed();
    EXPECT_EQ(feed_left(), 0);
    EXPECT_EQ(first_wrong(4001), -1);

    start_feed_memory(data);
    start_feed_file("/no/such/file");
    EXPECT_EQ(feed_left(), 0) << "starting one ends the running feed";
    start_feed_file(std::filesystem::temp_directory_path().string());
    EXPECT_EQ(feed_left(), 0) << "a folder is no file";

    start_feed_file(path.string());
    std::filesystem::resize_file(path, 10);
    drain_feed();
    EXPECT_EQ(feed_left(), 0) << "a file that shrank ends its feed";
    EXPECT_EQ(rx_count(), 10);
    std::filesystem::remove(path);
}

}  // namespace
}  // namespace orvanel
