// The record that takes any speed, termios2, is known to the kernel's headers only, and they can't
// stand beside those of the C library: hence no <termios.h> in this file.

#include "host/platform/serial/serial_tty.h"

#include "base/files.h"

#include <asm/termbits.h>
#include <fcntl.h>
#include <linux/serial.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace orvanel {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds retry_time{250};
constexpr int cts_look_ms = 10;      // no event tells of CTS
constexpr int speed_tolerance = 20;  // a driver that misses the speed by 1/20 hasn't taken it

bool passing(int fault) { return fault == EAGAIN || fault == EINTR; }

/// Line errors since the driver counts. False if it doesn't.
bool count_errors(int fd, std::uint64_t& errors) {
    serial_icounter_struct counts{};
    if (ioctl(fd, TIOCGICOUNT, &counts) != 0) return false;
    errors = 0;
    for (const int count :
         {counts.frame, counts.overrun, counts.parity, counts.brk, counts.buf_overrun})
        errors += static_cast<std::uint64_t>(count);
    return true;
}

/// 8N1 with RTS/CTS, raw, DTR dropped with the last closing, at this speed. Empty on success.
std::string apply(int fd, std::int32_t baud) {
    termios2 mode{};
    if (ioctl(fd, TCGETS2, &mode) != 0)
        return errno == ENOTTY ? "it is no serial device" : errno_text();
    mode.c_iflag = mode.c_oflag = mode.c_lflag = 0;
    mode.c_cflag = CS8 | CREAD | CLOCAL | HUPCL | CRTSCTS | BOTHER;
    mode.c_ispeed = mode.c_ospeed = static_cast<speed_t>(baud);
    mode.c_cc[VMIN] = mode.c_cc[VTIME] = 0;
    if (ioctl(fd, TCSETS2, &mode) != 0 || ioctl(fd, TCGETS2, &mode) != 0) return errno_text();
    // A driver that can't do it says nothing and takes another.
    const std::int64_t off = std::llabs(std::int64_t{mode.c_ospeed} - baud);
    if (off * speed_tolerance > baud) return "it doesn't take " + std::to_string(baud) + " baud";
    return {};
}

void set_modem_line(int fd, unsigned long how, int which) { (void)ioctl(fd, how, &which); }

/// Takes the device for us alone and sets it up. Empty on success.
std::string set_up(TtyLine& line, int fd) {
    // Root opens a device in spite of the ioctl; programs of root see the lock.
    if (flock(fd, LOCK_EX | LOCK_NB) != 0 || ioctl(fd, TIOCEXCL) != 0)
        return errno == EWOULDBLOCK ? "another program has it open"
               : errno == ENOTTY    ? "it is no serial device"
                                    : errno_text();
    if (std::string fault = apply(fd, line.baud); !fault.empty()) return fault;
    int lines = 0;
    line.modem_lines = ioctl(fd, TIOCMGET, &lines) == 0;
    if (!line.modem_lines && errno != ENOTTY && errno != EINVAL) return errno_text();
    line.counts_errors = count_errors(fd, line.errors);
    if (!line.modem_lines) return {};
    set_modem_line(fd, TIOCMBIS, TIOCM_DTR);
    set_modem_line(fd, line.rts ? TIOCMBIS : TIOCMBIC, TIOCM_RTS);
    return {};
}

std::string open_device(TtyLine& line) {
    const int fd = open(line.path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return line.path + ": " + (errno == EBUSY ? "another program has it open" : errno_text());
    const std::string fault = set_up(line, fd);
    if (fault.empty()) {
        line.fd = fd;
        return {};
    }
    ::close(fd);
    return line.path + ": " + fault;
}

/// The device has vanished. Its descriptor goes too: it would keep the system from giving the
/// device the same name again.
int lose(TtyLine& line) {
    ::close(line.fd);
    line.fd = -1;
    line.next_try = steady_clock::now() + retry_time;
    return -1;
}

/// Whether the device is there, opening it if it is back.
bool present(TtyLine& line) {
    if (line.fd >= 0) return true;
    const auto now = steady_clock::now();
    if (now < line.next_try) return false;
    line.next_try = now + retry_time;
    return open_device(line).empty();
}

/// The count that an ioctl gives, below 0 if the device is away.
int count_of(TtyLine& line, unsigned long what) {
    int count = 0;
    if (!present(line)) return -1;
    return ioctl(line.fd, what, &count) == 0 ? count : lose(line);
}

/// What read or write gave: 0 if it would have had to wait.
int moved(TtyLine& line, ssize_t bytes) {
    if (bytes >= 0) return static_cast<int>(bytes);
    return passing(errno) ? 0 : lose(line);
}

}  // namespace

std::string open_line(TtyLine& line, const SerialName& name) {
    line.path = name.path;
    return open_device(line);
}

void close_line(TtyLine& line) {
    if (line.fd < 0) return;
    // The system would wait long for bytes that CTS holds back.
    (void)ioctl(line.fd, TCFLSH, TCIOFLUSH);
    (void)ioctl(line.fd, TIOCNXCL);
    ::close(line.fd);
}

bool set_baud(TtyLine& line, std::int32_t baud) {
    line.baud = baud;
    return present(line) && apply(line.fd, baud).empty();
}

void set_rts(TtyLine& line, bool on) {
    line.rts = on;
    if (line.modem_lines && present(line))
        set_modem_line(line.fd, on ? TIOCMBIS : TIOCMBIC, TIOCM_RTS);
}

int cts(TtyLine& line) {
    if (!present(line)) return -1;
    if (!line.modem_lines) return 0;
    const int lines = count_of(line, TIOCMGET);
    if (lines < 0) return -1;
    return (lines & TIOCM_CTS) != 0 ? 0 : 1;
}

int queued_in(TtyLine& line) {
    const int count = count_of(line, FIONREAD);
    if (count < 0 || !line.counts_errors) return count;
    const std::uint64_t before = line.errors;
    return count_errors(line.fd, line.errors) && line.errors != before ? -1 : count;
}

int queued_out(TtyLine& line) { return count_of(line, TIOCOUTQ); }

int read(TtyLine& line, std::span<std::uint8_t> into) {
    return present(line) ? moved(line, ::read(line.fd, into.data(), into.size())) : -1;
}

int write(TtyLine& line, std::span<const std::uint8_t> data) {
    return present(line) ? moved(line, ::write(line.fd, data.data(), data.size())) : -1;
}

SerialWait wait_of(TtyLine& line, LineEvent event) {
    SerialWait wait = watch_nothing;
    if (line.fd < 0) {
        const auto left = std::chrono::ceil<milliseconds>(line.next_try - steady_clock::now());
        wait.look_ms = std::max(static_cast<int>(left.count()), 1);
        return wait;
    }
    wait.peer.fd = line.fd;
    if (event == LineEvent::input) wait.peer.events = POLLIN;
    if (event == LineEvent::output) wait.peer.events = POLLOUT;
    if (event == LineEvent::cts) {
        wait.ready = cts(line) != 1;
        wait.look_ms = cts_look_ms;
    }
    return wait;
}

bool settle(TtyLine& line, LineEvent /*event*/, const SerialWait& wait) {
    if (line.fd < 0) return present(line);
    if ((wait.peer.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) lose(line);
    return wait.peer.revents != 0;
}

}  // namespace orvanel
