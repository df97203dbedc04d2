// pipes.h: the two byte rings between the firmware and the world. Every byte for the firmware
// passes through rx_pipe, every byte from it through tx_pipe.
//
// No lock: `head` and `tail` are free-running 64-bit counts of bytes ever put and ever taken, so
// the bytes held are head - tail and the place in the ring is the count modulo pipe_size. `head` is
// stored by the producer whose turn it is; `tail` moves by compare and exchange alone, so that a
// clearing may meet a put or a get in any order. A put into a full ring drops what does not fit.

#pragma once

#include "firmware/core/ground/trace.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

namespace orvanel {

constexpr int pipe_size = 80000;  // bytes, not a power of two: places wrap by modulo
constexpr int high_mark = 64000;  // above it feeds stop and RTS goes off
constexpr int low_mark = 60000;   // a get that leaves less turns RTS on again

struct BytePipe {
    std::array<std::atomic<std::uint8_t>, pipe_size> buffer;
    std::atomic<std::uint64_t> head;  // bytes ever put
    std::atomic<std::uint64_t> tail;  // bytes ever taken or cleared
    std::atomic_flag turn;            // held by the producer that is putting
};

extern BytePipe rx_pipe;
extern BytePipe tx_pipe;

/// Bytes held, 0..pipe_size. The other side may change it at any moment.
int rx_count();
int tx_count();

/// Appends the bytes as one block: blocks of two producers never interleave. Wakes the firmware.
/// What doesn't fit is dropped; the result is the number of bytes that went in. `source` is that of
/// the first byte, for a trace.
std::size_t rx_pipe_put_block(std::span<const std::uint8_t> data,
                              const ByteSource& source = {.origin = ByteOrigin::companion});

/// Where the byte that rx_pipe_get took last came from; a zeroed one without a trace. Firmware
/// only.
ByteSource rx_source();

/// As rx_pipe_put_block, but where not all of it fits nothing goes in. True if it went in.
[[nodiscard]] bool rx_pipe_put_whole(std::span<const std::uint8_t> data);

/// The next byte, 0..255, or -1 if the pipe is empty. Below the low mark it turns RTS on.
int rx_pipe_get();

/// Append, and wake link_thread if it sends answers unasked. What doesn't fit is dropped and
/// counted in answer_bytes_dropped.
void tx_pipe_put(std::uint8_t byte);
void tx_pipe_put_block(std::span<const std::uint8_t> data);

/// The next byte, 0..255, or -1 if the pipe is empty.
int tx_pipe_get();

/// Drops all that the pipe holds.
void clear_pipe(BytePipe& pipe);

/// Power-on: both pipes empty.
void power_on_pipes();

}  // namespace orvanel
