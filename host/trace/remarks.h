// remarks.h: what the module tells a listener (firmware/core/ground/trace.h), in the words that
// users read.

#pragma once

#include "firmware/core/ground/trace.h"

#include <span>
#include <string>

namespace orvanel {

/// `line`, `feed`, `companion`, or a macro with its kind and number.
std::string name_of(const ByteSource& source);

/// `255 clamped to 239`
std::string words_of(Remark remark, int from, int to);

/// `characters 0x48 'H', 0x69 'i' are not in the font`
std::string words_of_missing_glyphs(std::span<const int> codes);

}  // namespace orvanel
