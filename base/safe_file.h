// safe_file.h: replacing a file so that a power cut, a kill or a full disk at any moment leaves one
// whole file under its name, the old or the new.

#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

enum class Backup : bool { none, keep };

/// Replaces the file through a link to its target, keeping its mode; makes it if it isn't there.
/// With Backup::keep the former file stays beside it under its name and ".bak". What is no plain
/// file (a device, a pipe) is written as it is. The result is empty on success, else the reason,
/// and the old file is untouched.
std::string replace_file(const std::string& path, std::span<const std::uint8_t> content,
                         Backup backup);

}  // namespace orvanel
