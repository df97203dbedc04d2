#include "firmware/store/ground/eeprom.h"

#include "firmware/core/ground/requests.h"

#include <algorithm>
#include <atomic>

namespace orvanel {

constinit int eeprom_size = eeprom_small;
constinit EepromImage eeprom_image{};
constinit EepromState eeprom_state = EepromState::unchanged;

namespace {

constinit int image_cursor = 0;  // 0..eeprom_large

// One copy is the firmware's to fill, one is what the main thread took last, and the third lies
// between them. Each side swaps its own for that one, so nobody reads what another writes.
constinit std::array<EepromImage, 3> copies{};
constinit std::uint8_t copy_to_fill = 0;  // firmware
constinit std::uint8_t copy_taken = 1;    // main thread

/// The index of the copy between, and copy_is_new until it is taken.
constexpr std::uint8_t copy_is_new = 4;
constinit std::atomic<std::uint8_t> copy_between{2};
constinit std::atomic<bool> copy_stands{false};

constexpr std::uint8_t copy_index(std::uint8_t between) { return between & 3; }

}  // namespace

void eeprom_reset_to(int size, std::span<const std::uint8_t> content) {
    eeprom_size = size;
    eeprom_state = EepromState::unchanged;
    eeprom_withdraw_copy();
    eeprom_image.fill(erased_byte);
    const std::size_t n = std::min(content.size(), static_cast<std::size_t>(size));
    std::copy_n(content.begin(), n, eeprom_image.begin());
}

std::span<const std::uint8_t> eeprom_bytes() {
    return std::span(eeprom_image).first(static_cast<std::size_t>(eeprom_size));
}

void eeprom_leave_copy() {
    std::ranges::copy(eeprom_bytes(), copies[copy_to_fill].begin());
    copy_to_fill = copy_index(copy_between.exchange(copy_to_fill | copy_is_new));
    // Not before the new one is there: an older one must not stand again.
    copy_stands.store(true);
}

bool eeprom_copy_stands() { return copy_stands.load(); }

void eeprom_withdraw_copy() {
    copy_stands.store(false);
    copy_between.fetch_and(static_cast<std::uint8_t>(~copy_is_new));
}

bool eeprom_copy_waits() { return (copy_between.load() & copy_is_new) != 0; }

std::span<const std::uint8_t> eeprom_take_copy() {
    if (!eeprom_copy_waits()) return {};
    const std::uint8_t got = copy_between.exchange(copy_taken);
    copy_taken = copy_index(got);
    if ((got & copy_is_new) == 0) return {};  // withdrawn meanwhile
    return std::span(copies[copy_taken]).first(static_cast<std::size_t>(eeprom_size));
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
    if (!shutdown_requested.load()) eeprom_image.fill(erased_byte);
}

}  // namespace orvanel
