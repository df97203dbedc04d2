// files.h: whole files in and out.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orvanel {

/// Reads a plain file of at most `most` bytes. The result is empty on success, else what went
/// wrong; `content` then says nothing.
std::string read_file(const std::string& path, std::size_t most,
                      std::vector<std::uint8_t>& content);

/// Replaces the file as one step: readers see the old content or the new, and when it fails the
/// old stays. A path that names no plain file (a device, a pipe) is written as it is. The result is
/// empty on success, else what went wrong.
std::string write_file(const std::string& path, std::span<const std::uint8_t> content);

}  // namespace orvanel
