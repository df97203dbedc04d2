#include "tests/support/fake_line.h"

#include <algorithm>
#include <utility>

namespace orvanel {

FakeLine fake_line{};

namespace {

bool usable(int line) { return line != 0 && !fake_line.faulty; }

}  // namespace

void fresh_line() {
    fake_line = {};
    fake_line.room = static_cast<std::size_t>(-1);
}

std::int64_t clock_ms() { return fake_line.now_ms; }

int serial_open(int port, std::int32_t baud) {
    const int held = fake_line.held_port;
    if (fake_line.absent || (fake_line.one_device && held != 0)) return 0;
    fake_line.held_port = port;
    fake_line.baud = baud;
    fake_line.rts = true;
    return fake_line.line = ++fake_line.openings;
}

void serial_close(int line) {
    ++fake_line.closings;
    if (line == fake_line.line) fake_line.held_port = 0;
}

bool serial_set_baud(int line, std::int32_t baud) {
    if (!usable(line)) return false;
    fake_line.baud = baud;
    return true;
}

void serial_set_rts(int line, bool on) {
    if (usable(line)) fake_line.rts = on;
}

int serial_cts(int line) { return usable(line) ? fake_line.cts : -1; }

int serial_queued_in(int line) {
    if (!usable(line) || std::exchange(fake_line.line_error, false)) return -1;
    return static_cast<int>(fake_line.in.size());
}

int serial_queued_out(int line) { return usable(line) ? fake_line.queued_out : -1; }

int serial_read(int line, std::span<std::uint8_t> into) {
    if (!usable(line)) return -1;
    const std::size_t n = std::min(into.size(), fake_line.in.size());
    std::copy_n(fake_line.in.begin(), n, into.begin());
    fake_line.in.erase(fake_line.in.begin(), fake_line.in.begin() + static_cast<std::ptrdiff_t>(n));
    return static_cast<int>(n);
}

int serial_write(int line, std::span<const std::uint8_t> data) {
    if (!usable(line)) return -1;
    const auto taken = data.first(std::min(data.size(), fake_line.room));
    fake_line.room -= taken.size();
    fake_line.out.insert(fake_line.out.end(), taken.begin(), taken.end());
    if (fake_line.on_write) fake_line.on_write();
    return static_cast<int>(taken.size());
}

void wait_for_line(int /*line*/, LineEvent event, int ms) {
    ++fake_line.waits;
    fake_line.waited_for = event;
    fake_line.now_ms += ms;
    if (fake_line.on_wait) fake_line.on_wait();
}

void wake_link() {
    if (fake_line.on_wake) fake_line.on_wake();
}

}  // namespace orvanel
