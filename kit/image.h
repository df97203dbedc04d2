// image.h: a kit laid out as the EEPROM's content. docs/reference/formats.md, "EEPROM image".

#pragma once

#include "kit/kit.h"

#include <cstdint>
#include <span>

namespace orvanel {

constexpr int data_start = 0x0E30;
constexpr int unprogrammed = 0xFFFF;  // as the length of an image

/// CRC-16/XMODEM: polynomial 0x1021, from 0, most significant bit first.
std::uint16_t crc_of(std::span<const std::uint8_t> bytes);

/// Where a kind's table begins, and the bytes of an entry.
int table_of(Kind kind);
int entry_size(Kind kind);

/// Two bytes, low byte first; both lie in `bytes`.
int pair_at(std::span<const std::uint8_t> bytes, int at);

/// Writes the CRC behind the bytes that the image's length covers, if there is a length and room.
void put_crc(Bytes& image);

/// 0x and four digits.
std::string hex4(int value);

/// The image that the kit describes, as large as its memory: items in the order of the source from
/// data_start, unless they ask for a place; tables, length, filler for a wanted length and CRC, the
/// CRC. Says in `faults` what doesn't fit.
Bytes lay_out(const Kit& kit, Faults& faults);

}  // namespace orvanel
