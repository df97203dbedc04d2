// bytes.h: blocks of bytes; narrowing, wrapping and byte order, written out where they are part of
// the behaviour.

#pragma once

#include <cstdint>
#include <vector>

namespace orvanel {

using Bytes = std::vector<std::uint8_t>;

/// The low 8 bits of `v`: a wrap, never a clamp. Wherever a number becomes a byte; a cast is for
/// characters, enumerators and words of dots.
constexpr std::uint8_t low8(std::int64_t v) { return static_cast<std::uint8_t>(v & 0xFF); }
static_assert(low8(300) == 44 && low8(-1) == 255);

/// A 16-bit value from its two bytes, as they come in the image and in `ESC & E`: low byte first.
constexpr std::uint16_t le16(std::uint8_t low, std::uint8_t high) {
    return static_cast<std::uint16_t>(low | high << 8);
}
static_assert(le16(0x0D, 0x78) == 0x780D);

}  // namespace orvanel
