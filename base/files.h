// files.h: reading whole files, or their start; what they are called, and what the system says of
// them.

#pragma once

#include "base/bytes.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace orvanel {

/// Reads a plain file of at most `max` bytes. The result is empty on success, else what went
/// wrong; `content` then says nothing.
std::string read_file(const std::string& path, std::size_t max, Bytes& content);

/// The same for the first `max` bytes of a plain file of any length.
std::string read_file_start(const std::string& path, std::size_t max, Bytes& content);

/// Why the path is no plain file that can be opened to read; empty if it is one.
std::string unreadable(const std::string& path);

/// The same after the path, as messages have it.
std::string file_fault(const std::string& path);

/// Whether it is a plain file, or a link to one. Directories, devices and pipes have no length, and
/// opening a pipe could wait for ever.
bool is_plain_file(const std::string& path);

/// What errno, or a number of its kind, says in words.
std::string errno_text();
std::string errno_text(int number);

/// Whether two paths name one file, by links too; or would once they were made.
bool is_same_file(const std::string& a, const std::string& b);

/// Whether the path is longer than the ending and ends in it, in either case of letters; the ending
/// is in small ones.
bool ends_in(std::string_view path, std::string_view ending);

}  // namespace orvanel
