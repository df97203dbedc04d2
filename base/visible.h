// visible.h: texts from outside as a terminal may have them. A file's name, a value of the settings
// or what another program has written may hold anything, also what a terminal takes as an order.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvanel {

/// The UTF-8 character that a text begins with.
struct Utf8Character {
    char32_t code;
    std::size_t length;  // bytes, 1..4; 0: what is there is none, or the text is empty
};
Utf8Character utf8_character(std::string_view text);

/// The text with \xHH for each byte that shows no character of its own: control characters, those
/// that turn the direction of writing, and what isn't UTF-8. For a name within a line.
std::string visible(std::string_view text);

/// The same for a message, whose ends of lines and tabs stay.
std::string visible_lines(std::string_view text);

/// Puts a message on standard error, visible, and ends its line.
void tell_user(std::string_view message);

}  // namespace orvanel
