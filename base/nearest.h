// nearest.h: what a word that nobody knows was meant for.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

/// The name that the word comes closest to; empty if none comes close.
std::string_view nearest_name(std::string_view word, const std::vector<std::string_view>& names);

/// `; is it 'NAME'?` with that name; empty if none comes close. A message that says what is wrong
/// with the word can end in it.
std::string is_it(std::string_view word, const std::vector<std::string_view>& names);

}  // namespace orvanel
