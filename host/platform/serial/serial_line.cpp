#include "host/platform/serial/serial_line.h"

#include "host/platform/serial/serial_name.h"
#include "host/platform/serial/serial_pty.h"
#include "host/platform/serial/serial_stdio.h"
#include "host/platform/serial/serial_tcp.h"
#include "host/platform/serial/serial_tty.h"
#include "host/platform/serial/serial_wait.h"
#include "host/platform/system/wake.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <limits>
#include <thread>
#include <utility>
#include <variant>

namespace orvanel {

std::string serial_fault;

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int busy = -1;
constexpr milliseconds max_closing{200};

/// What stands behind one COM port.
struct Device {
    std::string text;  // as the user names it
    // The lines that are open on it, or `busy` while it is being opened or closed.
    std::atomic<int> lines;
    std::atomic<std::int32_t> baud;  // of the line opened last
    // From here on of the thread that has the device: the one that opens it, then link_thread.
    std::variant<TtyLine, PtyLine, TcpLine, StdioLine> line;
    int used_line;  // the line of the last operation
    bool rts;
};

std::array<Device, max_com_ports> devices{};
std::string link_folder;
constinit int link_wake = -1;
constinit std::atomic<bool> link_woken{false};  // link_wake is set: saves setting it again
constinit int lines_opened = 0;                 // makes the number of each line another

Device& device_of_port(int port) { return devices[static_cast<std::size_t>(port - 1)]; }

Device& device_of_line(int line) { return device_of_port(line % max_com_ports + 1); }

int new_line(int port) {
    constexpr int max = std::numeric_limits<int>::max() / max_com_ports - 1;
    lines_opened = lines_opened % max + 1;
    return lines_opened * max_com_ports + port - 1;
}

/// The device of a line for an operation of link_thread. A line that was opened while the one
/// before was still open finds the device as if it had been opened again.
Device& device_for_use(int line) {
    Device& device = device_of_line(line);
    if (line == device.used_line) return device;
    device.used_line = line;
    device.rts = true;
    if (auto* tty = std::get_if<TtyLine>(&device.line)) {
        set_baud(*tty, device.baud.load());
        set_rts(*tty, true);
    }
    return device;
}

/// Without an RTS to tell the peer to wait we leave what he sends where it is, until the system
/// makes him wait.
bool peer_waits(const Device& device) {
    const auto* tty = std::get_if<TtyLine>(&device.line);
    return !device.rts && (tty == nullptr || !tty->modem_lines);
}

/// The result is empty on success, else what is wrong with the user's text.
std::string name_of_port(int port, SerialName& name) {
    std::string fault = parse_serial_name(device_of_port(port).text, name);
    if (name.kind == SerialKind::pty && name.path.empty() && !link_folder.empty())
        name.path = link_folder + "/COM" + std::to_string(port);
    return fault;
}

void make_kind(Device& device, SerialKind kind, std::int32_t baud) {
    switch (kind) {
    case SerialKind::tty:
        device.line.emplace<TtyLine>().baud = baud;
        break;
    case SerialKind::pty:
        device.line.emplace<PtyLine>();
        break;
    case SerialKind::tcp:
        device.line.emplace<TcpLine>();
        break;
    case SerialKind::stdio:
        device.line.emplace<StdioLine>();
        break;
    }
}

/// Empty on success.
std::string open_device(int port, std::int32_t baud) {
    SerialName name{};
    if (std::string fault = name_of_port(port, name); !fault.empty()) return fault;
    Device& device = device_of_port(port);
    device.rts = true;
    device.baud.store(baud);
    make_kind(device, name.kind, baud);
    return std::visit([&name](auto& kind) { return open_line(kind, name); }, device.line);
}

/// Waits for what the line watches, at most `ms`. True if wake_link has come.
bool wait_for_any(SerialWait& wait, int ms) {
    std::array<pollfd, 3> fds{pollfd{link_wake, POLLIN, 0}, wait.peer, wait.listener};
    if (poll(fds.data(), fds.size(), ms) <= 0) return false;
    wait.peer.revents = fds[1].revents;
    wait.listener.revents = fds[2].revents;
    if (fds[0].revents == 0) return false;
    // The flag goes last: who finds it still set left his words before we look at them again, and
    // who finds it clear sets the wake again.
    take_wake(link_wake);
    link_woken.exchange(false);
    return true;
}

/// One watch over the line. True if the event or a wake_link has come.
bool watch(int line, LineEvent event, int ms) {
    SerialWait wait = watch_nothing;
    if (line <= 0) return wait_for_any(wait, ms);
    Device& device = device_for_use(line);
    if (event == LineEvent::input && peer_waits(device)) event = LineEvent::idle;
    if (event == LineEvent::cts && !std::holds_alternative<TtyLine>(device.line)) return true;
    wait = std::visit([event](auto& kind) { return wait_of(kind, event); }, device.line);
    if (wait.ready || wait_for_any(wait, std::min(ms, wait.look_ms))) return true;
    return std::visit([&](auto& kind) { return settle(kind, event, wait); }, device.line);
}

}  // namespace

short poll_now(int fd, short events) {
    pollfd one{fd, events, 0};
    return poll(&one, 1, 0) > 0 ? one.revents : short{0};
}

bool open_serial() {
    link_woken.store(false);
    link_wake = open_wake();
    return link_wake >= 0;
}

void close_serial() { close_wake(std::exchange(link_wake, -1)); }

void set_serial_device(int port, std::string_view text) { device_of_port(port).text = text; }

void set_serial_folder(std::string folder) { link_folder = std::move(folder); }

std::string serial_peer_name(int port) {
    struct Names {
        std::string operator()(const TtyLine& tty) const { return tty.path; }
        std::string operator()(const PtyLine& pty) const { return pty.terminal; }
        std::string operator()(const TcpLine& tcp) const { return tcp.address; }
        std::string operator()(const StdioLine& /*stdio*/) const { return "stdio"; }
    };
    return std::visit(Names{}, device_of_port(port).line);
}

int real_serial_open(int port, std::int32_t baud) {
    serial_fault = "COM" + std::to_string(port) + ": there is no such port, or no such speed";
    if (port < 1 || port > max_com_ports || baud <= 0) return 0;
    Device& device = device_of_port(port);
    const auto end = steady_clock::now() + max_closing;
    for (int lines = device.lines.load();;) {
        if (lines == busy) {
            serial_fault = "COM" + std::to_string(port) + ": it is still being closed";
            if (steady_clock::now() >= end) return 0;
            std::this_thread::sleep_for(milliseconds{1});
            lines = device.lines.load();
        } else if (lines > 0) {
            if (!device.lines.compare_exchange_weak(lines, lines + 1)) continue;
            device.baud.store(baud);
            return new_line(port);
        } else if (device.lines.compare_exchange_weak(lines, busy)) {
            serial_fault = open_device(port, baud);
            const int line = serial_fault.empty() ? new_line(port) : 0;
            device.used_line = line;
            device.lines.store(line > 0 ? 1 : 0);
            return line;
        }
    }
}

void real_serial_close(int line) {
    Device& device = device_of_line(line);
    int lines = device.lines.load();
    while (!device.lines.compare_exchange_weak(lines, lines == 1 ? busy : lines - 1)) {
    }
    if (lines > 1) return;
    std::visit([](auto& kind) { close_line(kind); }, device.line);
    device.lines.store(0);
}

bool real_serial_set_baud(int line, std::int32_t baud) {
    if (baud <= 0) return false;
    auto* tty = std::get_if<TtyLine>(&device_for_use(line).line);
    return tty == nullptr || set_baud(*tty, baud);
}

void real_serial_set_rts(int line, bool on) {
    Device& device = device_for_use(line);
    device.rts = on;
    if (auto* tty = std::get_if<TtyLine>(&device.line)) set_rts(*tty, on);
}

int real_serial_cts(int line) {
    auto* tty = std::get_if<TtyLine>(&device_for_use(line).line);
    return tty == nullptr ? 0 : cts(*tty);
}

int real_serial_queued_in(int line) {
    Device& device = device_for_use(line);
    if (peer_waits(device)) return 0;
    return std::visit([](auto& kind) { return queued_in(kind); }, device.line);
}

int real_serial_queued_out(int line) {
    return std::visit([](auto& kind) { return queued_out(kind); }, device_for_use(line).line);
}

int real_serial_read(int line, std::span<std::uint8_t> into) {
    Device& device = device_for_use(line);
    if (into.empty() || peer_waits(device)) return 0;
    return std::visit([into](auto& kind) { return read(kind, into); }, device.line);
}

int real_serial_write(int line, std::span<const std::uint8_t> data) {
    if (data.empty()) return 0;
    return std::visit([data](auto& kind) { return write(kind, data); }, device_for_use(line).line);
}

void real_wait_for_line(int line, LineEvent event, int ms) {
    const auto end = steady_clock::now() + milliseconds{ms};
    while (ms > 0 && !watch(line, event, ms))
        ms = static_cast<int>(std::chrono::ceil<milliseconds>(end - steady_clock::now()).count());
}

void real_wake_link() {
    if (!link_woken.exchange(true)) set_wake(link_wake);
}

constinit const SerialLines real_lines{
    .open = real_serial_open,
    .close = real_serial_close,
    .set_baud = real_serial_set_baud,
    .set_rts = real_serial_set_rts,
    .cts = real_serial_cts,
    .queued_in = real_serial_queued_in,
    .queued_out = real_serial_queued_out,
    .read = real_serial_read,
    .write = real_serial_write,
    .wait = real_wait_for_line,
    .wake = real_wake_link,
};

}  // namespace orvanel
