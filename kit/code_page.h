// code_page.h: the module's characters as Unicode: ASCII, above it code page 437 but for the last
// two, which are a superscript three and a bar.

#pragma once

#include "kit/fault.h"

#include <span>
#include <string>
#include <string_view>

namespace orvanel {

/// The first character of UTF-8 text, which is shortened by it; -1, and one byte less, if it is
/// damaged. `text` isn't empty.
int take_character(std::string_view& text);

/// The module's code of a Unicode character, -1 if it has none.
int code_of(int character);

/// The Unicode character of a code, 0x20..0xFF.
int character_of(int code);

/// Bytes of the module as a text in double quotes, which take_text turns back to them.
std::string text_of(std::span<const std::uint8_t> bytes);

}  // namespace orvanel
