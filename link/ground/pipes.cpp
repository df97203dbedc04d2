#include "link/ground/pipes.h"

#include "link/ground/port.h"
#include "seam/platform.h"

#include <algorithm>

namespace orvanel {

constinit BytePipe rx_pipe{};
constinit BytePipe tx_pipe{};

namespace {

/// Beside rx_pipe's buffer, kept for a trace alone: where each byte came from. No macro's byte
/// passes here.
constinit std::array<std::atomic<std::uint64_t>, pipe_size> rx_sources{};
constinit ByteSource taken_source{};

constexpr int offset_bits = 32, number_bits = 24;
constexpr std::uint64_t number_mask = (1U << number_bits) - 1;

std::uint64_t packed(const ByteSource& source) {
    return std::uint64_t{source.offset} | (source.number & number_mask) << offset_bits |
           static_cast<std::uint64_t>(source.origin) << (offset_bits + number_bits);
}

ByteSource unpacked(std::uint64_t word) {
    return {.origin = static_cast<ByteOrigin>(word >> (offset_bits + number_bits)),
            .number = static_cast<std::uint32_t>(word >> offset_bits & number_mask),
            .offset = static_cast<std::uint32_t>(word)};
}

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
                      ByteSource source = {}) {
    while (pipe.turn.test_and_set(std::memory_order_acquire))
        pipe.turn.wait(true);
    const std::uint64_t head = pipe.head.load(std::memory_order_relaxed);
    const auto room = static_cast<std::size_t>(pipe_size - count_of(pipe));
    const std::size_t max = excess == Excess::drop_all && data.size() > room ? 0 : room;
    const std::size_t n = std::min(data.size(), max);
    auto place = static_cast<std::size_t>(head % pipe_size);
    for (const std::uint8_t byte : data.first(n)) {
        pipe.buffer[place].store(byte, std::memory_order_relaxed);
        if (tracing() && &pipe == &rx_pipe) [[unlikely]] {
            rx_sources[place].store(packed(source), std::memory_order_relaxed);
            ++source.offset;
        }
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

std::size_t rx_pipe_put_block(std::span<const std::uint8_t> data, const ByteSource& source) {
    const std::size_t put = put_block(rx_pipe, data, Excess::drop_rest, source);
    wake_firmware();
    return put;
}

bool rx_pipe_put_whole(std::span<const std::uint8_t> data) {
    const ByteSource line{.origin = ByteOrigin::line};
    const bool fits = put_block(rx_pipe, data, Excess::drop_all, line) == data.size();
    wake_firmware();
    return fits;
}

ByteSource rx_source() { return taken_source; }

int rx_pipe_get() {
    if (tracing()) [[unlikely]]
        taken_source =
            unpacked(rx_sources[rx_pipe.tail.load() % pipe_size].load(std::memory_order_relaxed));
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
