#include "host/window/roof/keyboard.h"

#include "base/bytes.h"
#include "host/bridge/bridge.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

namespace orvanel {

namespace {

constinit std::uint8_t alt_number = 0;  // of what was typed so far, the low 8 bits
constinit int alt_digits = 0;           // how many digits that were; 0: no number has begun

/// What the Windows character set has at 0x80 to 0x9F in place of Unicode's control characters; 0
/// where it has nothing.
constexpr std::array<char16_t, 32> windows_characters{
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};
constexpr char32_t windows_from = 0x80;
constexpr char32_t latin_from = 0xA0;
constexpr char32_t latin_to = 0xFF;

/// The code of the Windows character set, '?' for what it doesn't have.
std::uint8_t windows_code(char32_t character) {
    if (character < windows_from || (character >= latin_from && character <= latin_to))
        return low8(static_cast<std::int64_t>(character));
    const auto found = std::ranges::find(windows_characters, character);
    if (character == 0 || found == windows_characters.end()) return '?';
    return low8(static_cast<std::int64_t>(windows_from) + (found - windows_characters.begin()));
}

/// The German letters have other codes in the module's fonts; all else goes as it is.
std::uint8_t module_code(std::uint8_t code) {
    struct Letter {
        std::uint8_t windows, module;
    };
    constexpr Letter letters[]{{0xC4, 0x8E}, {0xD6, 0x99}, {0xDC, 0x9A}, {0xDF, 0xE1},
                               {0xE4, 0x84}, {0xF6, 0x94}, {0xFC, 0x81}};
    const auto found = std::ranges::find(letters, code, &Letter::windows);
    return found == std::end(letters) ? code : found->module;
}

}  // namespace

void function_key(int number) {
    constexpr int keys = 10;
    if (number >= 1 && number <= keys) key_ring_put(low8(number % keys));
}

void alt_digit(int digit) {
    alt_number = low8(alt_number * 10 + digit);
    ++alt_digits;
}

void alt_released() {
    if (alt_digits != 0) key_ring_put(alt_number);
    alt_number = 0;
    alt_digits = 0;
}

void character_typed(char32_t character) { key_ring_put(module_code(windows_code(character))); }

}  // namespace orvanel
