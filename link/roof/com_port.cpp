#include "link/roof/com_port.h"

#include "base/bytes.h"
#include "firmware/core/ground/requests.h"
#include "firmware/store/ground/macro.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"
#include "link/ground/wire.h"
#include "seam/host_calls.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cassert>
#include <cstddef>

namespace orvanel {

constinit bool line_waits = false;

namespace {

constexpr int nothing_handed = -1;
constexpr int wait_step_ms = 10;
constexpr int last_bytes_ms = 200;  // what the last bytes get to leave before a line is closed
constexpr int device_fifo = 64;     // bytes that a device may hold after its queue
constexpr int small_read = 256;     // bytes; more at once come from no slow line

// The way of a line from the main thread to link_thread.
constinit std::atomic<int> handed_line{nothing_handed};  // 0: none from now on
constinit std::atomic<int> lines_open{0};                // opened and not yet closed, by either

// link_thread's own.
constinit int line = 0;
constinit std::int32_t baud_set = 0;  // 0: not known
constinit bool rts_set = false;
constinit std::array<std::uint8_t, line_block> out_block{};
constinit std::array<std::uint8_t, line_block> in_block{};
constinit std::span<const std::uint8_t> unsent{};  // of out_block, for which the device had no room

void add(std::atomic<std::uint64_t>& total, int n) {
    total.fetch_add(static_cast<std::uint64_t>(n), std::memory_order_relaxed);
}

void hand_over(int handed) {
    if (handed > 0) lines_open.fetch_add(1);
    const int untaken = handed_line.exchange(handed);
    if (untaken > 0) {
        serial_close(untaken);
        lines_open.fetch_sub(1);
    }
    wake_link();
}

/// Waits until link_thread has closed what it was told to. It waits for nobody, and its last bytes
/// have a limit.
void wait_until_closed() {
    for (int open = lines_open.load(); open != 0; open = lines_open.load())
        lines_open.wait(open);
}

/// An open line, 0 if it can't be had.
int open_port(int port) {
    const std::int32_t baud = com_baud.load();
    const int opened = serial_open(port, baud);
    if (opened != 0 || lines_open.load() == 0) return opened;
    // Two ports may stand for one device, which one line alone can have.
    hand_over(0);
    wait_until_closed();
    return serial_open(port, baud);
}

void tell_unopened(int port) {
    char text[] = "cannot open COM0 !";
    *std::find(std::begin(text), std::end(text), '0') = static_cast<char>('0' + port);
    show_message("Error: HD Orvanel42 simulator", text);
}

/// Another line waits to be taken, or the program ends: no wait for the line goes on.
bool called_away() { return handed_line.load() != nothing_handed || shutdown_requested.load(); }

/// Waits until CTS is on. A fault counts as off.
bool wait_for_cts() {
    const std::int64_t start = time_10ms();
    for (int state = serial_cts(line); state != 0; state = serial_cts(line)) {
        if (!line_waits || called_away() || time_10ms() - start > cts_wait_limit) return false;
        com_wait(state < 0 ? LineEvent::idle : LineEvent::cts, wait_step_ms);
    }
    return true;
}

/// Writes as much as the device takes now, and shortens `data` by that. False if CTS stays off or
/// on a fault.
bool write_pieces(std::span<const std::uint8_t>& data) {
    while (!data.empty()) {
        if (!wait_for_cts()) return false;
        const auto piece = data.first(std::min<std::size_t>(data.size(), com_write_chunk));
        const int n = serial_write(line, piece);
        if (n < 0) return false;
        add(line_bytes_out, n);
        data = data.subspan(static_cast<std::size_t>(n));
        if (static_cast<std::size_t>(n) < piece.size()) return true;
    }
    return true;
}

/// The same, and told to a trace.
bool write_some(std::span<const std::uint8_t>& data) {
    const std::span<const std::uint8_t> whole = data;
    const bool went = write_pieces(data);
    if (wire_is_traced() && data.size() < whole.size()) [[unlikely]]
        wire_listener({.kind = WireKind::sent, .bytes = whole.first(whole.size() - data.size())});
    return went;
}

bool write_all(std::span<const std::uint8_t>& data) {
    std::int64_t start = time_10ms();
    while (!data.empty()) {
        const std::size_t before = data.size();
        if (!write_some(data)) return false;
        if (data.size() < before) start = time_10ms();
        if (data.empty()) break;
        if (!line_waits || called_away() || time_10ms() - start > cts_wait_limit) return false;
        com_wait(LineEvent::output, wait_step_ms);
    }
    return true;
}

/// False if answers wait that can't go now.
bool link_send_from_pipe() {
    if (tx_count() == 0) return true;
    if (!unsent.empty() || serial_cts(line) != 0 || serial_queued_out(line) > line_block)
        return false;
    std::size_t n = 0;
    for (int byte = 0; n < out_block.size() && (byte = tx_pipe_get()) >= 0; ++n)
        out_block[n] = low8(byte);
    unsent = std::span(out_block).first(n);
    if (!write_some(unsent)) unsent = {};
    return true;
}

/// Bytes that were read, at most `n`; 0 or below on a fault.
int link_read_to_pipe(int n) {
    const int got =
        com_read(std::span(in_block).first(static_cast<std::size_t>(std::min(n, line_block))));
    if (got <= 0) return got;
    const auto bytes = std::span(in_block).first(static_cast<std::size_t>(got));
    const std::size_t put = rx_pipe_put_block(bytes, {.origin = ByteOrigin::line});
    if (wire_is_traced()) [[unlikely]]
        wire_listener({.kind = WireKind::plain_in, .bytes = bytes, .lost = bytes.size() - put});
    if (rx_count() > high_mark) {
        com_rts_off();
        serve_line_words();
    }
    return got;
}

/// Gives the last bytes their time to leave: what the device had no room for, its queue, and what
/// it may hold after that.
void let_last_bytes_out() {
    if (!line_waits) return;
    const std::int64_t end = clock_ms() + last_bytes_ms;
    while (clock_ms() < end) {
        const int n = unsent.empty() ? 0 : serial_write(line, unsent);
        if (n > 0) unsent = unsent.subspan(static_cast<std::size_t>(n));
        if (n < 0 || (unsent.empty() && serial_queued_out(line) <= 0)) break;
        com_wait(LineEvent::idle, wait_step_ms);
    }
    constexpr std::int64_t bit_ms = 10 * 1000;  // bits of a byte on the line, ms of a second
    const std::int64_t fifo_ms = device_fifo * bit_ms / std::max(baud_set, 1) + 1;
    const std::int64_t gone = std::min(end, clock_ms() + fifo_ms);
    for (std::int64_t now = clock_ms(); now < gone; now = clock_ms())
        com_wait(LineEvent::idle, static_cast<int>(gone - now));
}

/// Drops what waits to be read: the next line may be the same device. A peer that sends on and on
/// doesn't hold us.
void com_drain_input() {
    constexpr int max_reads = 20;
    for (int i = 0; i < max_reads && com_queued_in() > 0; ++i)
        serial_read(line, in_block);
}

void close_line() {
    if (line == 0) return;
    let_last_bytes_out();
    com_drain_input();
    serial_close(line);
    line = 0;
    unsent = {};
    lines_open.fetch_sub(1);
    lines_open.notify_all();
}

void take_handed_line() {
    if (handed_line.load() == nothing_handed) return;
    const int handed = handed_line.exchange(nothing_handed);
    close_line();
    line = handed;
    if (line == 0) return;
    // What a full pipe asked of the line before is over with it.
    baud_set = 0;
    rts_wanted.store(true);
    rts_set = true;
}

}  // namespace

std::int64_t time_10ms() { return clock_ms() / 10; }

void com_select(int port, std::int32_t baud) {
    assert(port >= 0 && port <= max_com_ports);
    const int former = com_port.load();
    if (port == former) {
        if (baud == com_baud.load()) return;
        com_baud.store(baud);
        if (port > 0) com_set_baud(baud);
        return;
    }
    const int opened = port > 0 ? open_port(port) : 0;
    const bool failed = port > 0 && opened == 0;
    com_port.store(failed ? 0 : port);
    // Here and not when the line is taken: an ESC + in between is for the new one.
    if (opened != 0) com_restore_baud();
    hand_over(opened);
    if (failed) tell_unopened(port);
}

void choose_protocol(bool framed) {
    protocol_on.store(framed);
    wake_link();
}

void close_link() {
    hand_over(0);
    take_handed_line();
    line_waits = false;
}

void serve_line_words() {
    take_handed_line();
    if (line == 0) return;
    // Whether or not the device could do it: what it refuses it will refuse again.
    if (const std::int32_t baud = line_baud.load(); baud != baud_set) {
        serial_set_baud(line, baud);
        baud_set = baud;
    }
    if (const bool rts = rts_wanted.load(); rts != rts_set) {
        serial_set_rts(line, rts);
        rts_set = rts;
    }
    if (!unsent.empty() && serial_cts(line) == 0 && !write_some(unsent)) unsent = {};
}

bool line_is_open() { return line != 0; }

bool line_is_full() { return !unsent.empty(); }

bool line_has_cts() { return serial_cts(line) == 0; }

int com_queued_in() { return serial_queued_in(line); }

int com_read(std::span<std::uint8_t> into) {
    const int n = serial_read(line, into);
    if (n <= 0) return n;
    const std::uint64_t count = line_bytes_in.load(std::memory_order_relaxed);
    for (std::size_t i = 0; i < static_cast<std::size_t>(n); ++i)
        line_bytes_seen[(count + i) % line_bytes_seen.size()].store(into[i],
                                                                    std::memory_order_relaxed);
    add(line_bytes_in, n);
    return n;
}

bool com_write(std::span<const std::uint8_t> data) {
    // What plain bytes have left over goes first.
    if (!write_all(unsent)) {
        // They are lost with this; but a line that is to be closed still lets them out.
        if (!called_away()) unsent = {};
        return false;
    }
    return write_all(data);
}

TurnWait plain_turn() {
    const bool sending = link_send_from_pipe();
    const int queued = com_queued_in();
    if (queued < 0) return TurnWait::fault;
    // Asked again after the count: bytes that the peer sent after a change of protocol go the new
    // way, even if the change came amid this turn.
    if (queued > 0 && protocol_on.load()) return TurnWait::none;
    int got = 0;
    if (queued > 0) {
        // Any byte from the peer ends the automatic macro.
        auto_macro_mode.store(0);
        got = link_read_to_pipe(queued);
        if (got <= 0) return TurnWait::fault;
    }
    if (got > small_read || (sending && tx_count() > 0)) return TurnWait::none;
    if (got > 0) return TurnWait::pause;
    return sending && rts_wanted.load() ? TurnWait::input : TurnWait::change;
}

void com_wait(LineEvent event, int ms) { wait_for_line(line, event, ms); }

}  // namespace orvanel
