// visible.h: texts from outside as a terminal may have them. A file's name, a value of the settings
// or what another program has written may hold anything, also what a terminal takes as an order.

#pragma once

#include <string>
#include <string_view>

namespace orvanel {

/// The text with \xHH for each byte that shows no character of its own: control characters, those
/// that turn the direction of writing, and what isn't UTF-8. For a name within a line.
std::string visible(std::string_view text);

/// The same for a message, whose ends of lines and tabs stay.
std::string visible_lines(std::string_view text);

/// Puts a message on standard error, visible, and ends its line.
void tell_user(std::string_view message);

}  // namespace orvanel
