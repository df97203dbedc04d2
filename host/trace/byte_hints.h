// byte_hints.h: what is odd in the bytes of a step themselves, whatever the module made of them.

#pragma once

#include "host/trace/step.h"

namespace orvanel {

/// A command in its text, numbers as text after ESC, letters of UTF-8.
void add_byte_hints(Step& step);

/// Whether the command's last byte is a number of value ESC.
bool takes_esc(const Step& step);

/// For text after such a command. False if it doesn't go on as a command does.
bool add_taken_esc_hint(Step& step);

/// For a command that ends before it is complete, since nothing more came.
void add_unfinished_hint(Step& step);

/// For a command whose first bytes are a macro's last, and its other bytes come from elsewhere.
void add_macro_end_hint(Step& step);

}  // namespace orvanel
