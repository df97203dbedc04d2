// words.h: taking one line of a text apart: words, bytes, paths and numbers. Each take_ function
// shortens `rest` by what it took; where one can fail its result is empty on success, else what is
// wrong, for the user's eyes.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

/// Without the blanks (space, tab) around it.
std::string_view trimmed(std::string_view text);

/// Up to the next blank; empty at the end of the line.
std::string_view take_word(std::string_view& rest);

/// HEX and TEXT pieces up to the end of the line or the word `within`. Appends to `bytes`.
std::string take_bytes(std::string_view& rest, std::vector<std::uint8_t>& bytes);

/// A word, or anything between double quotes, in which a backslash is a backslash.
std::string take_path(std::string_view& rest, std::string& path);

/// A decimal number of min..max, with a minus sign only where min is below 0.
std::string take_number(std::string_view& rest, std::int64_t min, std::int64_t max,
                        std::int64_t& value);

/// A hexadecimal number of at most 32 bits, without prefix.
std::string take_hex_number(std::string_view& rest, std::uint32_t& value);

}  // namespace orvanel
