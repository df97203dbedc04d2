#include "firmware/store/ground/eeprom.h"

#include "firmware/core/ground/requests.h"

#include <algorithm>

namespace orvanel {

constinit int eeprom_size = eeprom_small;
constinit std::array<std::uint8_t, eeprom_large> eeprom_image{};
constinit EepromState eeprom_state = EepromState::unchanged;

namespace {

constinit int image_cursor = 0;  // 0..eeprom_large

}  // namespace

void eeprom_reset_to(int size, std::span<const std::uint8_t> content) {
    eeprom_size = size;
    eeprom_state = EepromState::unchanged;
    eeprom_image.fill(0xFF);
    const std::size_t n = std::min(content.size(), static_cast<std::size_t>(size));
    std::copy_n(content.begin(), n, eeprom_image.begin());
}

void eeprom_seek(std::uint16_t offset) { image_cursor = offset; }

std::uint8_t eeprom_read() {
    if (image_cursor >= eeprom_size) return 0;
    return eeprom_image[static_cast<std::size_t>(image_cursor++)];
}

std::uint16_t eeprom_read16() {
    const std::uint8_t low = eeprom_read();
    return le16(low, eeprom_read());
}

bool eeprom_write(std::uint8_t byte) {
    if (image_cursor >= eeprom_size || shutdown_requested.load()) return false;
    eeprom_image[static_cast<std::size_t>(image_cursor++)] = byte;
    return true;
}

void eeprom_erase() {
    if (!shutdown_requested.load()) eeprom_image.fill(0xFF);
}

}  // namespace orvanel
