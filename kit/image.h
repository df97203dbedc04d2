// image.h: a kit laid out as the EEPROM's content. docs/reference/formats.md, "EEPROM image".

#pragma once

#include "kit/kit.h"

#include <cstdint>
#include <span>
#include <vector>

namespace orvanel {

/// Two bytes, low byte first; both lie in `bytes`.
int pair_at(std::span<const std::uint8_t> bytes, int at);

/// Writes the CRC after the bytes that the image's length covers, if there is a length and room.
void put_crc(Bytes& image);

/// 0x and four digits.
std::string hex4(int value);

/// A kit's image, empty with a fault, and the offset of each item that has bytes of its own.
struct LaidOut {
    Bytes image;
    std::vector<int> offsets;
};

/// The image that the kit describes, as large as its memory: items in the order of the source from
/// data_start, unless they ask for a place; tables, length, filler for a wanted length and CRC, the
/// CRC. Says in `faults` what doesn't fit.
LaidOut lay_out(const Kit& kit, Faults& faults);

}  // namespace orvanel
