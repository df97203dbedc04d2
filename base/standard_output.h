// standard_output.h: standard output of a program, and why it has refused what was written. The
// buffer is full long before the end, and the first failure alone knows its reason.

#pragma once

#include <string>
#include <string_view>

namespace orvanel {

/// Puts text on standard output, whose buffer may keep it until flush_stdout.
void write_stdout(std::string_view text);

/// Empties the buffer. False if standard output hasn't taken all that was written so far.
bool flush_stdout();

/// The errno of the first failure, 0 if there was none or nobody knows it.
int stdout_errno();

/// `can't write to standard output: No space left on device`.
std::string stdout_fault();

}  // namespace orvanel
