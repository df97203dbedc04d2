// serial_support.h: the other end of a line, and a folder for its links.

#pragma once

#include "host/platform/serial/serial_line.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

constexpr std::chrono::seconds long_limit{60};

inline std::span<const std::uint8_t> bytes_of(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Waits until the condition holds, looking every millisecond at most.
template <typename Condition> bool eventually(Condition holds) {
    const auto end = std::chrono::steady_clock::now() + long_limit;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > end) return false;
        real_wait_for_line(0, LineEvent::idle, 1);
    }
    return true;
}

inline int open_descriptors() {
    return static_cast<int>(
        std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

/// Reads from the line until `count` bytes are there, looking first how many wait, as link_thread
/// does.
inline std::string taken(int line, std::size_t count) {
    std::string all;
    eventually([&] {
        std::array<std::uint8_t, 4000> part{};
        const auto waiting = static_cast<std::size_t>(std::max(real_serial_queued_in(line), 0));
        const int n =
            real_serial_read(line, {part.data(), std::min({part.size(), count, waiting})});
        all.append(part.begin(), part.begin() + std::max(n, 0));
        count -= static_cast<std::size_t>(std::max(n, 0));
        return count == 0;
    });
    return all;
}

/// The same from a descriptor of the peer that doesn't block; ends early at its end.
inline std::string peer_takes(int fd, std::size_t count) {
    std::string all;
    eventually([&] {
        std::array<char, 4000> part{};
        const ssize_t n = ::read(fd, part.data(), std::min(part.size(), count - all.size()));
        if (n > 0) all.append(part.data(), static_cast<std::size_t>(n));
        return n == 0 || all.size() == count;
    });
    return all;
}

inline void peer_sends(int fd, std::string_view text) {
    eventually([&] {
        const ssize_t n = ::write(fd, text.data(), text.size());
        if (n > 0) text.remove_prefix(static_cast<std::size_t>(n));
        return text.empty();
    });
}

/// A pseudo terminal that stands in for a serial device: the test has its master end.
struct StandIn {
    StandIn() {
        master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        std::array<char, 64> text{};
        EXPECT_EQ(grantpt(master), 0);
        EXPECT_EQ(unlockpt(master), 0);
        EXPECT_EQ(ptsname_r(master, text.data(), text.size()), 0);
        name = text.data();
    }
    StandIn(const StandIn&) = delete;
    StandIn& operator=(const StandIn&) = delete;
    ~StandIn() { ::close(master); }

    int master;
    std::string name;
};

/// Opens and closes the wake, and sees to it that a test leaves no descriptor open.
class SerialTest : public testing::Test {
  protected:
    SerialTest() {
        std::string name = (std::filesystem::temp_directory_path() / "orvanel.XXXXXX").string();
        folder = mkdtemp(name.data());
        EXPECT_TRUE(open_serial());
    }
    ~SerialTest() override {
        close_serial();
        set_serial_folder("");
        std::filesystem::remove_all(folder);
        EXPECT_EQ(open_descriptors(), before);
    }

    static int open_port(int port, const std::string& device) {
        set_serial_device(port, device);
        return real_serial_open(port, 115200);
    }

    const int before = open_descriptors();
    std::filesystem::path folder;
};

}  // namespace orvanel
