#include "base/utf8.h"

#include <array>
#include <cstdint>

namespace orvanel {

Utf8Character utf8_character(std::string_view text) {
    constexpr std::array<char32_t, 5> min_of_length{0, 0, 0x80, 0x800, 0x10000};
    if (text.empty()) return {0, 0};
    const auto at = [text](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t first = at(0);
    if (first < 0x80) return {first, 1};
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < length) return {0, 0};
    char32_t code = first & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((at(i) & 0xC0) != 0x80) return {0, 0};
        code = code << 6 | (at(i) & 0x3FU);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < min_of_length[length] || surrogate || code > 0x10FFFF) return {0, 0};
    return {code, length};
}

void append_utf8(std::string& text, char32_t code) {
    const std::size_t length = code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
    constexpr std::array<unsigned, 5> leads{0, 0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(leads[length] | code >> 6 * (length - 1));
    for (std::size_t i = length - 1; i-- > 0;)
        text += static_cast<char>(0x80 | (code >> 6 * i & 0x3F));
}

std::string_view after_mark(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    if (text.starts_with(mark)) text.remove_prefix(mark.size());
    return text;
}

}  // namespace orvanel
