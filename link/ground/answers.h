// answers.h: the two forms of what the module says on the line. Nothing here can fail: a full
// tx_pipe drops what doesn't fit.

#pragma once

#include <cstdint>
#include <span>

namespace orvanel {

/// One raw byte.
void answer_byte(std::uint8_t byte);

/// The head of a packet, ESC, id and n, whose n payload bytes the caller sends by answer_byte.
void answer_head(char id, std::uint8_t n);

/// A whole packet: ESC, id, the payload's length (at most 255) and the payload.
void answer_packet(char id, std::span<const std::uint8_t> payload);

}  // namespace orvanel
