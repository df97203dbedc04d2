// eeprom_command.h: reading, programming and clearing the image over the line, and its checksum.

#pragma once

#include <cstdint>

namespace orvanel {

/// What eeprom_checksum found. With an image_length of 0xFFFF both CRCs are 0.
struct ImageCheck {
    std::uint16_t image_length;  // as the image says
    std::uint16_t image_crc;     // computed over the bytes before image_length
    std::uint16_t stored_crc;    // read after them
};

/// CRC-16/XMODEM (polynomial 0x1021, start 0, no reflection) over the image, bytes past its end as
/// zeros. Moves the image cursor.
ImageCheck eeprom_checksum();

/// ESC & E: address, length, operation and data, all raw.
void eeprom_command();

}  // namespace orvanel
