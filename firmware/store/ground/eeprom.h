// eeprom.h: the memory that outlives a reset, as one block of bytes. Its layout stands in
// firmware/core/language/eeprom_layout.h. After the load at start it belongs to firmware_thread;
// the host takes it back when that thread has ended.

#pragma once

#include "base/bytes.h"
#include "firmware/core/language/eeprom_layout.h"

#include <array>
#include <cstdint>
#include <span>

namespace orvanel {

/// eeprom_small or eeprom_large; set at start, before the firmware runs.
extern int eeprom_size;

/// The image: the first eeprom_size bytes are the module's memory.
using EepromImage = std::array<std::uint8_t, eeprom_large>;
extern EepromImage eeprom_image;

/// Makes an erased image of `size` bytes, all 0xFF, and copies `content` to its start; what is
/// longer than the image is cut. For the load at program start.
void eeprom_reset_to(int size, std::span<const std::uint8_t> content);

/// Whether the image has to be saved at the end of the run.
enum class EepromState : std::int8_t {
    overflowed = -1,  // a write went past the end and has not been reported yet
    unchanged = 0,
    programmed = 1,
};
extern EepromState eeprom_state;

/// The image of this run, eeprom_size bytes.
std::span<const std::uint8_t> eeprom_bytes();

// The copy for a save while the firmware runs. A J or C that has programmed the image leaves one,
// so it is never one that a write has begun to change. Neither side waits for the other.

/// Leaves a copy of the image as it stands, in place of one that nobody has taken. Firmware.
void eeprom_leave_copy();

/// Takes that back, unless it has been taken: the image has overflowed. Firmware.
void eeprom_withdraw_copy();

/// Whether the last copy, also one that has been taken, has not been withdrawn: false, a save of it
/// that has failed is not tried again. From any thread.
bool eeprom_copy_stands();

/// Whether a copy waits to be taken. From any thread.
bool eeprom_copy_waits();

/// Takes the copy that waits; empty if none does. It stays as it is until the next call. Main
/// thread.
std::span<const std::uint8_t> eeprom_take_copy();

/// Sets the image cursor, 0..65535. Not checked here.
void eeprom_seek(std::uint16_t offset);

/// The byte at the cursor, which advances; outside the image 0, and the cursor stays.
std::uint8_t eeprom_read();

/// The two bytes at the cursor, low byte first, by eeprom_read.
std::uint16_t eeprom_read16();

/// Writes at the cursor, which advances. False, and nothing changed, outside the image and once the
/// program is told to end: the image is saved as it stood then.
bool eeprom_write(std::uint8_t byte);

/// Fills the whole image with 0xFF, unless the program has been told to end.
void eeprom_erase();

/// The byte at `offset`, 0 outside the image. Leaves the cursor alone.
inline std::uint8_t eeprom_at(std::int64_t offset) {
    if (offset < 0 || offset >= eeprom_size) return 0;
    return eeprom_image[static_cast<std::size_t>(offset)];
}

}  // namespace orvanel
