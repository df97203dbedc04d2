#include "host/platform/headless/simulated_line.h"

#include "host/scenario/world.h"
#include "link/roof/com_port.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <vector>

namespace orvanel {

namespace {

constexpr std::size_t receive_queue = 16384;  // bytes

constinit int open_line = 0;  // 0: none
constinit int lines_opened = 0;
constinit bool absent = false;
constinit bool cts = true;
constinit bool rts = false;
constinit std::int32_t speed = 0;
constinit std::vector<std::uint8_t> received{};
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
}

bool set_baud(int /*line*/, std::int32_t baud) {
    speed = baud;
    return true;
}

int read(int /*line*/, std::span<std::uint8_t> into) {
    const auto n = static_cast<std::ptrdiff_t>(std::min(into.size(), received.size()));
    std::copy_n(received.begin(), n, into.begin());
    received.erase(received.begin(), received.begin() + n);
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
    .queued_in = [](int) { return simulated_queued(); },
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
}

std::vector<std::uint8_t>& line_sent() { return sent; }

void set_line_cts(bool on) { cts = on; }

void set_line_absent(bool is_absent) { absent = is_absent; }

}  // namespace orvanel
