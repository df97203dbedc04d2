#include "link/ground/answers.h"

#include "link/ground/pipes.h"

namespace orvanel {

namespace {

constexpr std::uint8_t packet_start = 0x1B;

}  // namespace

void answer_byte(std::uint8_t byte) { tx_pipe_put(byte); }

void answer_head(char id, std::uint8_t n) {
    answer_byte(packet_start);
    answer_byte(static_cast<std::uint8_t>(id));
    answer_byte(n);
}

void answer_packet(char id, std::span<const std::uint8_t> payload) {
    answer_head(id, static_cast<std::uint8_t>(payload.size()));
    tx_pipe_put_block(payload);
}

}  // namespace orvanel
