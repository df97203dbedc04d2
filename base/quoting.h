// quoting.h: texts in quotes, with \ before what doesn't stand for itself, and back; and the user's
// own words as they may stand in a message.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orvanel {

// What scenarios and kits write after a backslash, and the byte that each letter means. Any other
// byte is x and two hexadecimal digits.
constexpr std::string_view escape_letters = "\\\"nrte";
constexpr std::string_view escaped_bytes = "\\\"\n\r\t\x1B";
static_assert(escape_letters.size() == escaped_bytes.size());

/// The byte of a letter after a backslash, -1 if it means none.
constexpr int escaped_byte(char letter) {
    const std::size_t i = escape_letters.find(letter);
    return i == std::string_view::npos ? -1 : static_cast<unsigned char>(escaped_bytes[i]);
}

/// The letter after a backslash that means the byte, 0 if none does.
constexpr char escape_letter(char byte) {
    const std::size_t i = escaped_bytes.find(byte);
    return i == std::string_view::npos ? '\0' : escape_letters[i];
}

/// \xHH
std::string byte_escape(char byte);

/// The bytes as a TEXT piece, which take_bytes gives back (base/words.h): in double quotes, what
/// isn't printable ASCII with its escape. Of the bytes that have a letter only those in `lettered`
/// get it, which holds \ and " at least.
std::string text_piece(std::string_view bytes, std::string_view lettered = escaped_bytes);

/// The text as it may stand in a message: cut to a readable length, and what isn't printable
/// ASCII as \xHH. `in_quotes` puts it in single quotes.
std::string printable(std::string_view text);
std::string in_quotes(std::string_view text);

}  // namespace orvanel
