// module_text.h: texts of the module as a scenario writes them: UTF-8 for whoever reads it, codes
// of the module's code page on the glass.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

/// The codes of a text in UTF-8. A byte that belongs to no character is its own code. Empty on
/// success, else which character the module lacks.
std::string codes_of(std::string_view text, std::vector<std::uint8_t>& codes);

/// Codes as a text in double quotes that a scenario reads back. A line feed stands as a blank.
std::string module_text(std::span<const std::uint8_t> codes);

}  // namespace orvanel
