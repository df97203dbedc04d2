// bdf.h: fonts out of and into BDF, the text format of bitmap fonts.

#pragma once

#include "kit/font.h"

#include <string>
#include <string_view>

namespace orvanel {

/// What the numbers of a BDF's characters are.
enum class Encoding {
    stated,   // what the file says: its own registry means codes, any other one Unicode
    unicode,  // turned to codes by the module's code page
    codes,    // the module's codes
};

/// Reads the wanted characters. Throws a Fault with a line of the file; `name` is the file's.
Font read_bdf(const std::string& name, std::string_view text, const Codes& wanted,
              Encoding encoding);

/// The font as a BDF whose characters are codes.
std::string write_bdf(const Font& font, std::string_view name);

}  // namespace orvanel
