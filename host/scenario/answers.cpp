#include "host/scenario/answers.h"

#include "host/scenario/world.h"
#include "link/ground/pipes.h"

#include <algorithm>
#include <utility>

namespace orvanel {

namespace {

/// The byte at a free-running count between tail and head.
std::uint8_t byte_at(std::uint64_t count) {
    return tx_pipe.buffer[static_cast<std::size_t>(count % pipe_size)].load(
        std::memory_order_relaxed);
}

bool still_there(std::uint64_t tail) {
    return tx_pipe.tail.load(std::memory_order_acquire) == tail;
}

}  // namespace

Match match_answers(std::span<const std::uint8_t> expected) {
    std::uint64_t tail = tx_pipe.tail.load(std::memory_order_acquire);
    const std::uint64_t head = tx_pipe.head.load(std::memory_order_acquire);
    // A clearing since the first load can have brought tail past this head.
    if (head < tail) return Match::not_yet;
    const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(head - tail, expected.size()));
    for (std::size_t i = 0; i < n; ++i)
        if (byte_at(tail + i) != expected[i])
            return still_there(tail) ? Match::impossible : Match::not_yet;
    if (n < expected.size()) return Match::not_yet;
    return tx_pipe.tail.compare_exchange_strong(tail, tail + n) ? Match::matched : Match::not_yet;
}

std::vector<std::uint8_t> take_answers() {
    std::vector<std::uint8_t> bytes;
    for (int byte = tx_pipe_get(); byte >= 0; byte = tx_pipe_get())
        bytes.push_back(static_cast<std::uint8_t>(byte));
    return bytes;
}

Match match_line(std::span<const std::uint8_t> expected) {
    std::vector<std::uint8_t>& sent = line_sent();
    const auto n = static_cast<std::ptrdiff_t>(std::min(sent.size(), expected.size()));
    if (!std::equal(sent.begin(), sent.begin() + n, expected.begin())) return Match::impossible;
    if (static_cast<std::size_t>(n) < expected.size()) return Match::not_yet;
    sent.erase(sent.begin(), sent.begin() + n);
    return Match::matched;
}

std::vector<std::uint8_t> take_line_sent() { return std::exchange(line_sent(), {}); }

std::vector<std::uint8_t> waiting_answers() {
    const std::uint64_t tail = tx_pipe.tail.load(std::memory_order_acquire);
    const std::uint64_t head = tx_pipe.head.load(std::memory_order_acquire);
    std::vector<std::uint8_t> bytes;
    for (std::uint64_t count = tail; count < head; ++count)
        bytes.push_back(byte_at(count));
    return bytes;
}

}  // namespace orvanel
