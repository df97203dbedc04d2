// json.h: values of JSON.

#pragma once

#include <string>
#include <string_view>

namespace orvanel {

/// A text in UTF-8 as a JSON string. A byte that belongs to no character is the character of that
/// number.
std::string json_text(std::string_view text);

}  // namespace orvanel
