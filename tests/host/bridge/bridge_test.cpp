// The messages of the companion and of a second start, without what carries them and by the socket.

#include "base/bytes.h"
#include "base/folder_lock.h"
#include "firmware/store/ground/macro.h"
#include "host/bridge/bridge.h"
#include "host/platform/instance/instance.h"
#include "host/platform/instance/instance_client.h"
#include "link/feeds/feeds.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"
#include "tests/support/fake_platform.h"
#include "tests/support/fake_window.h"
#include "tests/support/stream.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

namespace orvanel {

namespace {

std::uint32_t send(std::uint32_t number, std::uint32_t first = 0, std::uint32_t second = 0) {
    return bridge_message({number, {first, second}});
}

class Bridge : public testing::Test {
  protected:
    void SetUp() override {
        fresh_platform();
        fake_window = {};
        power_on_pipes();
        stop_feed();
        com_port.store(0);
        companion_gone();
        activate_terminal();
        while (key_ring_get() >= 0) {
        }
    }
};

/// A program that takes messages, with the test as its peers.
class Companion : public Bridge {
  protected:
    void SetUp() override {
        Bridge::SetUp();
        std::string name = (std::filesystem::temp_directory_path() / "orvanel.XXXXXX").string();
        folder = mkdtemp(name.data());
        std::string fault;
        ASSERT_EQ(lock_folder(folder, fault), FolderLock::taken) << fault;
        ASSERT_EQ(open_instance(false), "");
    }
    void TearDown() override {
        close_instance();
        std::filesystem::remove_all(folder);
    }

    /// Serves until nothing is left to do at once.
    static void serve() {
        pollfd ready{instance_fd(), POLLIN, 0};
        while (poll(&ready, 1, 0) > 0)
            serve_instance();
    }

    /// Both sides are this thread, so nothing here may wait for the other one.
    [[nodiscard]] int connect() const {
        const std::string path = read_lock(folder).socket;
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        EXPECT_EQ(::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0)
            << path;
        serve();
        return fd;
    }

    static void put(int peer, std::span<const std::uint8_t> bytes) {
        EXPECT_EQ(::send(peer, bytes.data(), bytes.size(), MSG_NOSIGNAL), std::ssize(bytes));
        serve();
    }

    /// The next answer, as soon as it is there; none if the connection has ended.
    static std::optional<std::uint32_t> answer(int peer) {
        std::array<std::uint8_t, answer_size> bytes{};
        ssize_t n = -1;
        for (int ms = 0; n < 0 && ms < 60'000; ++ms) {
            serve();
            n = recv(peer, bytes.data(), bytes.size(), MSG_DONTWAIT);
            if (n < 0) std::this_thread::sleep_for(std::chrono::milliseconds{1});
        }
        if (n != std::ssize(bytes)) return std::nullopt;
        return std::uint32_t{le16(bytes[0], bytes[1])} | std::uint32_t{le16(bytes[2], bytes[3])}
                                                             << 16;
    }

    std::string folder;
};

}  // namespace

TEST_F(Bridge, bytes_for_the_module_end_an_automatic_macro) {
    auto_macro_mode.store(1);
    EXPECT_EQ(send(0x400, 0x4341, 0x42), 0U);
    EXPECT_EQ(auto_macro_mode.load(), 1) << "a message without bytes brings none";
    EXPECT_EQ(send(0x403, 0x4341, 0x42), 0U);
    EXPECT_EQ(auto_macro_mode.load(), 0);
    for (const char c : {'A', 'B', 'C'})
        EXPECT_EQ(rx_pipe_get(), c);
    EXPECT_EQ(rx_pipe_get(), -1);
    for (const std::uint32_t unknown : {0U, 0x400U, 0x407U, 0x409U, 0x411U, 0x429U, 0xFFFFFFFFU})
        EXPECT_EQ(send(unknown, 0x4341, 0x42), 0U);
    EXPECT_EQ(rx_count(), 0);
}

TEST_F(Bridge, packing_and_unpacking_agree_and_the_number_says_how_many) {
    const std::vector<std::uint8_t> bytes{0x80, 0x91, 0xA2, 0xB3, 0xC4, 0xD5};
    const BridgeParameters packed = bridge_pack(bytes);
    EXPECT_EQ(packed.first, 0x0000A280U);
    EXPECT_EQ(packed.second, 0xD5C4B391U);
    for (int n = 0; n <= 6; ++n) {
        const auto back = bridge_unpack(packed, n);
        EXPECT_TRUE(std::equal(bytes.begin(), bytes.begin() + n, back.begin())) << n;
        EXPECT_EQ(back[static_cast<std::size_t>(n)], 0) << n;
    }
    std::vector<std::uint32_t> numbers;
    for (const BridgeMessage& message : bridge_name_messages("thirteen.char"))
        numbers.push_back(message.number);
    EXPECT_EQ(numbers, (std::vector<std::uint32_t>{0x40A, 0x410, 0x410, 0x40B}));
}

TEST_F(Bridge, answers_come_packed_and_missing_bytes_as_ff) {
    tx_pipe_put_block(bytes("\x11\x22\x33\x44\x55"));
    EXPECT_EQ(send(0x414), 5U);
    EXPECT_EQ(send(0x418), 0x44332211U);
    EXPECT_EQ(send(0x417), 0x00FFFF55U);
}

TEST_F(Bridge, the_status_word_leaves_the_answers_to_a_chosen_port) {
    send(0x428);
    tx_pipe_put('x');
    key_ring_put('a');
    EXPECT_EQ(send(0x414), 0x01000001U);
    com_port.store(1);
    EXPECT_EQ(send(0x414), 0x01000000U);
    com_port.store(0);
}

TEST_F(Bridge, typed_bytes_are_kept_for_a_companion_that_was_seen) {
    key_ring_put('a');
    EXPECT_EQ(send(0x41E), 0xFFFFFFFFU);
    EXPECT_EQ(send(0x428), 1U);
    for (int i = 0; i < key_ring_size + 1; ++i)
        key_ring_put(static_cast<std::uint8_t>(i));
    EXPECT_EQ(send(0x414) >> 24, 64U) << "what finds no room is dropped";
    for (std::uint32_t i = 0; i < key_ring_size; ++i)
        EXPECT_EQ(send(0x41E), i);
    EXPECT_EQ(send(0x41E), 0xFFFFFFFFU);
    companion_gone();
    key_ring_put('b');
    EXPECT_EQ(send(0x41E), 'b') << "nobody has looked for it yet";
    EXPECT_FALSE(activate_terminal());
    key_ring_put('c');
    EXPECT_EQ(send(0x41E), 0xFFFFFFFFU);
}

TEST_F(Bridge, the_companions_window_comes_to_the_front_when_asked) {
    send(0x414, 0, 7);
    EXPECT_EQ(fake_window.activated, 0U);
    EXPECT_TRUE(activate_terminal());
    EXPECT_EQ(fake_window.activated, 7U);
    send(0x428, 0, 8);
    EXPECT_EQ(fake_window.activated, 8U);
    send(0x428);
    EXPECT_EQ(fake_window.activated, 8U) << "one without a window";
    EXPECT_TRUE(activate_terminal());
}

TEST_F(Bridge, names_are_put_together_cleared_and_bounded) {
    const std::string path = testing::TempDir() + "bridge" + std::to_string(getpid());
    const auto open_as = [](const std::string& name) {
        for (const BridgeMessage& message : bridge_open_messages(name))
            bridge_message(message);
    };
    // A bitmap of no dots: seven bytes as a picture, two as a stream.
    std::ofstream(path, std::ios::binary) << std::string(2, '\0');
    open_as(path);
    EXPECT_EQ(feed_left(), 7);
    drain_feed();
    for (const int byte : {0x1B, int{'U'}, int{'L'}, 0, 0})
        EXPECT_EQ(rx_pipe_get(), byte) << "at the module's first dot";
    send(0x40A, 1);
    EXPECT_EQ(feed_left(), 2) << "the same name, unchanged";
    send(0x40A, 3);
    EXPECT_EQ(feed_left(), 2) << "nothing is to be done with it";
    open_as('"' + path + '"');
    EXPECT_EQ(feed_left(), 7);
    const std::string longest = "/" + std::string(253 - path.size(), '/') + path;
    stop_feed();
    open_as(longest + "x");
    EXPECT_EQ(feed_left(), 0) << "no such file";
    open_as("/" + longest);
    EXPECT_EQ(feed_left(), 7) << "255 bytes fit";
    send(0x40A, 0);
    open_as("//" + longest);
    send(0x40A, 1);
    EXPECT_EQ(feed_left(), 7) << "256 don't, and nothing is opened, nothing closed";
    std::filesystem::remove(path);
}

TEST_F(Companion, a_full_module_makes_the_sender_wait_and_nobody_else) {
    const int sender = connect(), other = connect();
    rx_pipe_put_block(std::vector<std::uint8_t>(high_mark + 1));
    const auto early = message_bytes({0x403, {0x4341, 0x42}}),
               late = message_bytes({0x401, {'D', 0}});
    put(sender, early);
    put(sender, std::span(late).first(5));
    put(other, message_bytes({0x428, {0, 0}}));
    EXPECT_EQ(answer(other), 1U);
    EXPECT_EQ(rx_count(), high_mark + 1);
    power_on_pipes();
    EXPECT_EQ(answer(sender), 0U);
    EXPECT_EQ(rx_count(), 3);
    put(sender, std::span(late).subspan(5));
    shutdown(sender, SHUT_WR);
    EXPECT_EQ(answer(sender), 0U);
    for (const char c : {'A', 'B', 'C', 'D'})
        EXPECT_EQ(rx_pipe_get(), c);
    EXPECT_EQ(answer(sender), std::nullopt) << "it has ended";
    close(sender);
    close(other);
}

TEST_F(Companion, is_who_made_itself_known_last_and_has_not_gone) {
    const int first = connect(), second = connect();
    for (const int peer : {first, second}) {
        put(peer, message_bytes({0x428, {0, 0}}));
        EXPECT_EQ(answer(peer), 1U);
    }
    close(first);
    serve();
    EXPECT_TRUE(activate_terminal());
    close(second);
    serve();
    EXPECT_FALSE(activate_terminal());
}

TEST_F(Companion, one_too_many_is_sent_away_until_another_goes) {
    std::vector<int> peers;
    for (int i = 0; i < 16; ++i)
        peers.push_back(connect());
    const int late = connect();
    EXPECT_EQ(answer(late), std::nullopt);
    close(peers.back());
    peers.back() = connect();
    put(peers.back(), message_bytes({0x428, {0, 0}}));
    EXPECT_EQ(answer(peers.back()), 1U);
    for (const int peer : peers)
        close(peer);
    close(late);
}

}  // namespace orvanel
