// remarks.h: what the module tells a listener (firmware/core/ground/trace.h), in the words that
// users read.

#pragma once

#include "firmware/core/ground/trace.h"

#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

/// `line`, `feed`, `companion`, or a macro with its kind and number.
std::string name_of(const ByteSource& source);

/// `255 clamped to 239`
std::string words_of(Remark remark, int from, int to);

/// What may have been meant by letters that are no command: `; is it #ZL?` if they stand the wrong
/// way round, else the letters that there are.
std::string words_of_cure(std::uint8_t lead_in, std::uint8_t group, std::uint8_t op);

/// `characters 0x48 'H', 0x69 'i' are not in the font`
std::string words_of_missing_glyphs(std::span<const int> codes);

}  // namespace orvanel
