#include "link/ground/pipes.h"

#include "link/ground/port.h"
#include "seam/platform.h"

#include <algorithm>

namespace orvanel {

constinit BytePipe rx_pipe{};
constinit BytePipe tx_pipe{};

namespace {

/// Beside rx_pipe's buffer, kept for a trace alone: where each byte came from.
constinit std::array<std::atomic<ByteOrigin>, pipe_size> rx_origins{};
constinit ByteOrigin taken_origin = ByteOrigin::companion;

int count_of(const BytePipe& pipe) {
    // Tail first: head only grows, so the difference is never below 0.
    const std::uint64_t tail = pipe.tail.load(std::memory_order_acquire);
    const std::uint64_t head = pipe.head.load(std::memory_order_acquire);
    return static_cast<int>(std::min<std::uint64_t>(head - tail, pipe_size));
}

/// What becomes of a block that doesn't fit.
enum class Excess : std::uint8_t { drop_rest, drop_all };

/// The bytes that went in. The room is looked at and filled in one turn.
std::size_t put_block(BytePipe& pipe, std::span<const std::uint8_t> data, Excess excess,
                      ByteOrigin origin = {}) {
    while (pipe.turn.test_and_set(std::memory_order_acquire))
        pipe.turn.wait(true);
    const std::uint64_t head = pipe.head.load(std::memory_order_relaxed);
    const auto room = static_cast<std::size_t>(pipe_size - count_of(pipe));
    const std::size_t most = excess == Excess::drop_all && data.size() > room ? 0 : room;
    const std::size_t n = std::min(data.size(), most);
    auto place = static_cast<std::size_t>(head % pipe_size);
    for (const std::uint8_t byte : data.first(n)) {
        pipe.buffer[place].store(byte, std::memory_order_relaxed);
        if (tracing() && &pipe == &rx_pipe) [[unlikely]]
            rx_origins[place].store(origin, std::memory_order_relaxed);
        if (++place == pipe_size) place = 0;
    }
    pipe.head.store(head + n, std::memory_order_release);
    pipe.turn.clear(std::memory_order_release);
    pipe.turn.notify_one();
    return n;
}

int get(BytePipe& pipe) {
    std::uint64_t tail = pipe.tail.load(std::memory_order_acquire);
    for (;;) {
        if (pipe.head.load(std::memory_order_acquire) == tail) return -1;
        // A clearing may overtake us here; then the exchange fails, and the byte was not ours.
        const std::uint8_t byte =
            pipe.buffer[static_cast<std::size_t>(tail % pipe_size)].load(std::memory_order_relaxed);
        if (pipe.tail.compare_exchange_weak(tail, tail + 1, std::memory_order_acq_rel)) return byte;
    }
}

}  // namespace

void power_on_pipes() {
    clear_pipe(rx_pipe);
    clear_pipe(tx_pipe);
}

int rx_count() { return count_of(rx_pipe); }

int tx_count() { return count_of(tx_pipe); }

void rx_pipe_put_block(std::span<const std::uint8_t> data, ByteOrigin origin) {
    put_block(rx_pipe, data, Excess::drop_rest, origin);
    wake_firmware();
}

bool rx_pipe_put_whole(std::span<const std::uint8_t> data) {
    const bool fits = put_block(rx_pipe, data, Excess::drop_all, ByteOrigin::line) == data.size();
    wake_firmware();
    return fits;
}

ByteOrigin rx_origin() { return taken_origin; }

int rx_pipe_get() {
    if (tracing()) [[unlikely]]
        taken_origin = rx_origins[rx_pipe.tail.load() % pipe_size].load(std::memory_order_relaxed);
    const int byte = get(rx_pipe);
    if (byte >= 0 && rx_count() < low_mark) com_rts_on();
    return byte;
}

void tx_pipe_put(std::uint8_t byte) { tx_pipe_put_block({&byte, 1}); }

void tx_pipe_put_block(std::span<const std::uint8_t> data) {
    const std::size_t put = put_block(tx_pipe, data, Excess::drop_rest);
    if (put < data.size()) {
        answer_bytes_dropped.fetch_add(data.size() - put, std::memory_order_relaxed);
        remark(Remark::answer_dropped);
    }
    // In frames an answer waits until the peer asks for it.
    if (com_port.load() > 0 && !protocol_on.load()) wake_link();
    if (tracing()) [[unlikely]]
        tell_answer(data.first(put));
}

int tx_pipe_get() { return get(tx_pipe); }

void clear_pipe(BytePipe& pipe) {
    std::uint64_t tail = pipe.tail.load(std::memory_order_acquire);
    while (!pipe.tail.compare_exchange_weak(tail, pipe.head.load(std::memory_order_acquire),
                                            std::memory_order_acq_rel)) {
    }
}

}  // namespace orvanel
