// files.h: reading whole files, or their start; and what they are called.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

/// Reads a plain file of at most `most` bytes. The result is empty on success, else what went
/// wrong; `content` then says nothing.
std::string read_file(const std::string& path, std::size_t most,
                      std::vector<std::uint8_t>& content);

/// The same for the first `most` bytes of a plain file of any length.
std::string read_file_start(const std::string& path, std::size_t most,
                            std::vector<std::uint8_t>& content);

/// Whether two paths name one file, by links too; or would once they were made.
bool is_same_file(const std::string& a, const std::string& b);

/// Whether the path is longer than the ending and ends in it, in either case of letters; the ending
/// is in small ones.
bool ends_in(std::string_view path, std::string_view ending);

}  // namespace orvanel
