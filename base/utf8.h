// utf8.h: characters in UTF-8.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvanel {

/// The character that a text begins with.
struct Utf8Character {
    char32_t code;
    std::size_t length;  // bytes, 1..4; 0: what is there is none, or the text is empty
};
Utf8Character utf8_character(std::string_view text);

/// Appends a character, which is one that UTF-8 has: up to 0x10FFFF and no surrogate.
void append_utf8(std::string& text, char32_t code);

/// The text after the mark that some editors put before UTF-8.
std::string_view after_mark(std::string_view text);

}  // namespace orvanel
