// little_endian.h: 32-bit numbers in blocks of bytes, low byte first, as bitmaps hold them.

#pragma once

#include "base/bytes.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace orvanel {

/// The number at `at`; its four bytes lie in `bytes`.
constexpr std::uint32_t le32(std::span<const std::uint8_t> bytes, std::size_t at) {
    return std::uint32_t{bytes[at]} | std::uint32_t{bytes[at + 1]} << 8 |
           std::uint32_t{bytes[at + 2]} << 16 | std::uint32_t{bytes[at + 3]} << 24;
}

constexpr void put_le32(std::span<std::uint8_t> bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[at + i] = low8(value >> 8 * i);
}

}  // namespace orvanel
