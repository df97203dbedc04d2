#include "host/platform/serial/serial_pty.h"

#include "base/files.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace orvanel {

namespace {

namespace fs = std::filesystem;

// No event tells that a peer has come.
constexpr int peer_look_ms = 10;
// What it holds for the peer isn't known, only that it takes no more.
constexpr int full_queue = 8192;

constexpr std::string_view terminal_folder = "/dev/pts/";

void make_raw(int fd) {
    termios mode{};
    if (tcgetattr(fd, &mode) != 0) return;
    cfmakeraw(&mode);
    (void)tcsetattr(fd, TCSANOW, &mode);
}

/// Drops what nobody has read and undoes what the peer has set. Whether or not there has been one:
/// closing the terminal is what makes it tell from now on that nobody is there.
bool clean_terminal(const std::string& terminal) {
    const int fd = open(terminal.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return false;
    (void)tcflush(fd, TCIFLUSH);
    make_raw(fd);
    close(fd);
    return true;
}

bool see_peer(PtyLine& line) {
    const bool there = (poll_now(line.master, 0) & POLLHUP) == 0;
    if (line.peer && !there) clean_terminal(line.terminal);
    line.peer = there;
    return there;
}

/// Whether a link is of a port that is no more: it leads to a pseudo terminal that isn't there, or
/// whose number has come round to us.
bool is_stale(const std::string& link, const std::string& terminal) {
    std::error_code fault;
    const std::string target = fs::read_symlink(link, fault).string();
    if (fault || !target.starts_with(terminal_folder)) return false;
    return target == terminal || fs::status(target, fault).type() == fs::file_type::not_found;
}

/// Empty on success.
std::string make_link(const std::string& link, const std::string& terminal) {
    if (symlink(terminal.c_str(), link.c_str()) == 0) return {};
    if (errno != EEXIST) return link + ": " + errno_text();
    if (!is_stale(link, terminal)) return link + ": something of that name is there already";
    unlink(link.c_str());
    if (symlink(terminal.c_str(), link.c_str()) == 0) return {};
    return link + ": " + errno_text();
}

std::string open_terminal(PtyLine& line) {
    line.master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    std::array<char, 64> name{};
    if (line.master < 0 || grantpt(line.master) != 0 || unlockpt(line.master) != 0 ||
        ptsname_r(line.master, name.data(), name.size()) != 0)
        return errno_text();
    line.terminal = name.data();
    return clean_terminal(line.terminal) ? "" : errno_text();
}

}  // namespace

std::string open_line(PtyLine& line, const SerialName& name) {
    std::string fault = open_terminal(line);
    if (!fault.empty()) fault.insert(0, "pseudo terminal: ");
    if (fault.empty() && !name.path.empty()) {
        fault = make_link(name.path, line.terminal);
        if (fault.empty()) line.link = name.path;
    }
    if (!fault.empty()) close_line(line);
    return fault;
}

void close_line(PtyLine& line) {
    std::error_code gone;
    if (!line.link.empty() && fs::read_symlink(line.link, gone) == line.terminal)
        unlink(line.link.c_str());
    if (line.master >= 0) close(line.master);
}

int queued_in(PtyLine& line) {
    see_peer(line);
    int count = 0;
    return ioctl(line.master, FIONREAD, &count) == 0 ? count : 0;
}

int queued_out(PtyLine& line) {
    see_peer(line);
    return (poll_now(line.master, POLLOUT) & POLLOUT) != 0 ? 0 : full_queue;
}

int read(PtyLine& line, std::span<std::uint8_t> into) {
    // It fails when nothing has come as when nobody is there.
    const ssize_t bytes = ::read(line.master, into.data(), into.size());
    return bytes < 0 ? 0 : static_cast<int>(bytes);
}

int write(PtyLine& line, std::span<const std::uint8_t> data) {
    // As it was when the queues were looked at, which is before each block: the link writes a block
    // in small pieces.
    if (!line.peer) return static_cast<int>(data.size());
    const ssize_t bytes = ::write(line.master, data.data(), data.size());
    return bytes < 0 ? 0 : static_cast<int>(bytes);
}

SerialWait wait_of(PtyLine& line, LineEvent event) {
    SerialWait wait = watch_nothing;
    const bool peer = see_peer(line);
    if (event == LineEvent::input) wait.ready = queued_in(line) > 0;
    if (event == LineEvent::output) wait.ready = !peer;
    if (!peer) {
        // Watched, it would tell of that without end.
        wait.look_ms = peer_look_ms;
        return wait;
    }
    wait.peer.fd = line.master;
    if (event == LineEvent::input) wait.peer.events = POLLIN;
    if (event == LineEvent::output) wait.peer.events = POLLOUT;
    return wait;
}

bool settle(PtyLine& /*line*/, LineEvent /*event*/, const SerialWait& wait) {
    return (wait.peer.revents & wait.peer.events) != 0;
}

}  // namespace orvanel
