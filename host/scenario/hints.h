// hints.h: what is legal in a scenario and probably not meant, told to the trace, and what the
// scenario says to be meant after all.

#pragma once

#include "host/scenario/picture.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace orvanel {

/// The command of the running line, before it runs.
void note_command(std::string_view name);

/// What is found with the next command, or with what it sends, doesn't count if it is of the kind
/// `name`. The result is what is wrong with the name, empty if nothing.
std::string allow_next(const std::string& name);

/// `expect-answers` of so many bytes.
void hint_on_answers(std::size_t expected);

/// `expect-screen`, before it looks.
void hint_on_screen(const std::string& path, Shown shown);

/// `line` brings bytes.
void hint_on_line(std::size_t count);

/// `screen` keeps a picture.
void note_picture(const std::string& path);

/// The scenario is over.
void hint_on_end();

}  // namespace orvanel
