// command_reference.h: the table of commands (firmware/core/language/commands.h) as a page.

#pragma once

#include <string>

namespace orvanel {

/// The Markdown page docs/reference/commands.md.
std::string command_reference();

}  // namespace orvanel
