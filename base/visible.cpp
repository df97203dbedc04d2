#include "base/visible.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace orvanel {

namespace {

struct Range {
    char32_t first, last;
};

/// Characters that a terminal acts on, or that make a line look like another one.
constexpr Range unseen[]{
    {0x00, 0x1F},      // C0
    {0x7F, 0x9F},      // DEL, C1
    {0x061C, 0x061C},  // marks of the direction of writing
    {0x200B, 0x200F}, {0x2028, 0x202E}, {0x2060, 0x2069}, {0xFEFF, 0xFEFF},
};

bool is_seen(char32_t code) {
    return std::none_of(std::begin(unseen), std::end(unseen), [code](const Range& range) {
        return code >= range.first && code <= range.last;
    });
}

std::string made_visible(std::string_view text, std::string_view kept) {
    std::string shown;
    while (!text.empty()) {
        const auto [code, length] = utf8_character(text);
        const std::size_t n = std::max<std::size_t>(length, 1);
        if ((length > 0 && is_seen(code)) || kept.find(text.front()) != std::string_view::npos) {
            shown += text.substr(0, n);
        } else {
            for (const char c : text.substr(0, n)) {
                std::array<char, 5> escape{};
                std::snprintf(escape.data(), escape.size(), "\\x%02X",
                              static_cast<unsigned>(static_cast<unsigned char>(c)));
                shown += escape.data();
            }
        }
        text.remove_prefix(n);
    }
    return shown;
}

}  // namespace

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

std::string visible(std::string_view text) { return made_visible(text, ""); }

std::string visible_lines(std::string_view text) { return made_visible(text, "\n\t"); }

void tell_user(std::string_view message) {
    std::fprintf(stderr, "%s\n", visible_lines(message).c_str());
}

}  // namespace orvanel
