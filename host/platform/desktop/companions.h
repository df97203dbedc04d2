// companions.h: what the menu leads to outside the program: the manual, and the companion in a
// terminal window.

#pragma once

#include <string>

namespace orvanel {

/// The first page of the manual: as installed, or as built beside the program; the former if there
/// is none.
std::string help_page();

/// The command that starts the companion for the module that lives in `folder`: Glasterm if it lies
/// beside this program, else orvanel42-terminal in the desktop's terminal program. Words with
/// blanks stand in double quotes.
std::string terminal_command(const std::string& folder);

}  // namespace orvanel
