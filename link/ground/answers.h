// answers.h: the two forms of what the module says on the line. Nothing here can fail: a full
// tx_pipe drops what doesn't fit, and counts it.

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace orvanel {

/// One raw byte.
void answer_byte(std::uint8_t byte);

/// A packet: ESC, id, the payload's length (at most 255) and the payload.
void answer_packet(char id, std::span<const std::uint8_t> payload);
void answer_text(char id, std::string_view payload);

}  // namespace orvanel
