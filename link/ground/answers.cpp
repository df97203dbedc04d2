#include "link/ground/answers.h"

#include "link/ground/pipes.h"

#include <algorithm>
#include <array>
#include <cassert>

namespace orvanel {

namespace {

constexpr std::uint8_t packet_start = 0x1B;
constexpr std::size_t head_size = 3;
constexpr std::size_t max_payload = 255;

template <typename Bytes> void put_packet(char id, const Bytes& payload) {
    assert(payload.size() <= max_payload);
    std::array<std::uint8_t, head_size + max_payload> packet{
        packet_start, static_cast<std::uint8_t>(id), static_cast<std::uint8_t>(payload.size())};
    std::ranges::transform(payload, packet.begin() + head_size,
                           [](auto byte) { return static_cast<std::uint8_t>(byte); });
    tx_pipe_put_block(std::span(packet).first(head_size + payload.size()));
}

}  // namespace

void answer_byte(std::uint8_t byte) { tx_pipe_put(byte); }

void answer_packet(char id, std::span<const std::uint8_t> payload) { put_packet(id, payload); }

void answer_text(char id, std::string_view payload) { put_packet(id, payload); }

}  // namespace orvanel
