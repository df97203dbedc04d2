#include "host/platform/headless/simulated_line.h"

#include "host/scenario/world.h"
#include "link/roof/com_port.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

namespace orvanel {

namespace {

constexpr std::int64_t us_per_s = 1'000'000;
constexpr std::size_t receive_queue = 16384;  // bytes

constinit int open_line = 0;  // 0: none
constinit int lines_opened = 0;
constinit bool absent = false;
constinit bool cts = true;
constinit bool rts = false;
constinit std::int32_t speed = 0;
constinit std::vector<std::uint8_t> received{};
constinit std::vector<std::int64_t> arrivals_us{};  // when each of them has come in, in order
constinit std::int64_t last_arrival_us = 0;
constinit std::int32_t peer_speed = 0;  // 0: bytes come in at once
constinit std::vector<std::uint8_t> sent{};

int open(int /*port*/, std::int32_t baud) {
    if (absent) return 0;
    rts = true;
    speed = baud;
    return open_line = ++lines_opened;
}

void close(int line) {
    // A change of port opens the new line before it closes the old one.
    if (line == open_line) open_line = 0;
    received.clear();
    arrivals_us.clear();
    last_arrival_us = 0;
}

bool set_baud(int /*line*/, std::int32_t baud) {
    speed = baud;
    return true;
}

/// Bytes that have come in by now.
std::size_t arrived() {
    const auto end = std::ranges::upper_bound(arrivals_us, clock_us());
    return static_cast<std::size_t>(end - arrivals_us.begin());
}

int read(int /*line*/, std::span<std::uint8_t> into) {
    const auto n = static_cast<std::ptrdiff_t>(std::min(into.size(), arrived()));
    std::copy_n(received.begin(), n, into.begin());
    received.erase(received.begin(), received.begin() + n);
    arrivals_us.erase(arrivals_us.begin(), arrivals_us.begin() + n);
    return static_cast<int>(n);
}

int write(int /*line*/, std::span<const std::uint8_t> data) {
    sent.insert(sent.end(), data.begin(), data.end());
    return static_cast<int>(data.size());
}

}  // namespace

constinit const SerialLines simulated_lines{
    .open = open,
    .close = close,
    .set_baud = set_baud,
    .set_rts = [](int, bool on) { rts = on; },
    .cts = [](int) { return cts ? 0 : 1; },
    .queued_in = [](int) { return static_cast<int>(arrived()); },
    .queued_out = [](int) { return 0; },
    .read = read,
    .write = write,
    .wait = [](int, LineEvent, int) {},
    .wake = serve_line_words,
};

int simulated_queued() { return static_cast<int>(received.size()); }

bool simulated_rts() { return open_line != 0 && rts; }

std::int32_t simulated_baud() { return open_line != 0 ? speed : 0; }

void line_receive(std::span<const std::uint8_t> data) {
    if (open_line == 0) return;
    const auto taken = data.first(std::min(data.size(), receive_queue - received.size()));
    received.insert(received.end(), taken.begin(), taken.end());
    const std::int64_t byte_us = peer_speed == 0 ? 0 : 10 * us_per_s / peer_speed;
    last_arrival_us = std::max(last_arrival_us, clock_us());
    while (arrivals_us.size() < received.size())
        arrivals_us.push_back(last_arrival_us += byte_us);
}

std::vector<std::uint8_t>& line_sent() { return sent; }

void set_line_speed_baud(std::int32_t baud) { peer_speed = baud; }

void set_line_cts(bool on) { cts = on; }

void set_line_absent(bool is_absent) { absent = is_absent; }

}  // namespace orvanel
