// The descriptors are shared with other programs, such as the shell behind us, so they aren't made
// non-blocking; poll says whether a call would wait.

#include "host/platform/serial/serial_stdio.h"

#include "base/files.h"

#include <climits>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace orvanel {

namespace {

constexpr std::size_t max_ahead = 4096;

// A pipe that takes anything at all takes as much at once.
constexpr std::size_t piece = PIPE_BUF;

/// A descriptor of our own for standard input or output. A terminal is opened again and so may be
/// non-blocking: of it poll says only that one byte can go.
int own_descriptor(int fd, int direction) {
    struct stat what {};
    if (fstat(fd, &what) == 0 && S_ISCHR(what.st_mode)) {
        const std::string path = "/proc/self/fd/" + std::to_string(fd);
        const int own = open(path.c_str(), direction | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        if (own >= 0) return own;
    }
    return fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

void end(int& fd) {
    close(fd);
    fd = -1;
}

bool passing(int fault) { return fault == EAGAIN || fault == EINTR; }

void read_ahead(StdioLine& line) {
    if (line.in < 0 || !line.ahead.empty() || poll_now(line.in, POLLIN) == 0) return;
    line.ahead.resize(max_ahead);
    const ssize_t bytes = ::read(line.in, line.ahead.data(), line.ahead.size());
    line.ahead.resize(static_cast<std::size_t>(std::max<ssize_t>(bytes, 0)));
    if (bytes == 0 || (bytes < 0 && !passing(errno))) end(line.in);
}

}  // namespace

std::string open_line(StdioLine& line, const SerialName& /*name*/) {
    line.in = own_descriptor(STDIN_FILENO, O_RDONLY);
    line.out = own_descriptor(STDOUT_FILENO, O_WRONLY);
    if (line.in < 0 || line.out < 0) {
        std::string fault = "standard input and output: " + errno_text();
        close_line(line);
        return fault;
    }
    // Who is started by an internet daemon has a socket there, and an urgent byte is one like the
    // others.
    const int inline_data = 1;
    (void)setsockopt(line.in, SOL_SOCKET, SO_OOBINLINE, &inline_data, sizeof inline_data);
    return {};
}

void close_line(StdioLine& line) {
    if (line.in >= 0) close(line.in);
    if (line.out >= 0) close(line.out);
}

int queued_in(StdioLine& line) {
    read_ahead(line);
    return static_cast<int>(line.ahead.size());
}

int queued_out(StdioLine& line) {
    int count = 0;
    if (line.out < 0) return 0;
    struct stat what {};
    const bool pipe = fstat(line.out, &what) == 0 && S_ISFIFO(what.st_mode);
    return ioctl(line.out, pipe ? FIONREAD : TIOCOUTQ, &count) == 0 ? count : 0;
}

int read(StdioLine& line, std::span<std::uint8_t> into) {
    read_ahead(line);
    const std::size_t n = std::min(line.ahead.size(), into.size());
    std::copy_n(line.ahead.begin(), n, into.begin());
    line.ahead.erase(line.ahead.begin(), line.ahead.begin() + static_cast<std::ptrdiff_t>(n));
    return static_cast<int>(n);
}

int write(StdioLine& line, std::span<const std::uint8_t> data) {
    if (line.out >= 0 && poll_now(line.out, POLLOUT) == 0) return 0;
    if (line.out >= 0) {
        const ssize_t bytes = ::write(line.out, data.data(), std::min(data.size(), piece));
        if (bytes >= 0) return static_cast<int>(bytes);
        if (passing(errno)) return 0;
        end(line.out);
    }
    return static_cast<int>(data.size());
}

SerialWait wait_of(StdioLine& line, LineEvent event) {
    SerialWait wait = watch_nothing;
    if (event == LineEvent::input) {
        wait.ready = queued_in(line) > 0;
        wait.peer = {line.in, POLLIN, 0};
    }
    if (event == LineEvent::output) {
        wait.ready = line.out < 0;
        wait.peer = {line.out, POLLOUT, 0};
    }
    return wait;
}

bool settle(StdioLine& line, LineEvent event, const SerialWait& wait) {
    if (event == LineEvent::input) return queued_in(line) > 0;
    return wait.peer.revents != 0;
}

}  // namespace orvanel
