// safe_file.h: replacing a file so that a power cut, a kill or a full disk at any moment leaves one
// whole file under its name, the old or the new.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace orvanel {

enum class Backup : bool { none, keep };

/// Replaces the file through a link to its target, keeping its mode; makes it if it isn't there. A
/// write-protected one is refused. With Backup::keep the former file stays beside it under its name
/// and ".bak", or where that is a folder or write-protected, under a free name after it. What is
/// no plain file (a device, a pipe) is written as it is. The result is empty on success, else the
/// reason, and the old file is untouched.
std::string replace_file(const std::string& path, std::span<const std::uint8_t> content,
                         Backup backup);

/// The name beside the file, or beside the target of a link, that keep_beside would give it:
/// `path`.1, or the first number after it that is free.
std::string free_name(const std::string& path);

/// Gives the file such a name as well, so that replacing it loses nothing; `name` is what it got.
/// The result is empty on success, else the reason.
std::string keep_beside(const std::string& path, std::string& name);

/// Keeps a plain file beside it under its name and ".bak", as a replacement with Backup::keep
/// would. One that isn't there leaves all as it is. The result is empty on success, else the
/// reason.
std::string back_up(const std::string& path);

/// Moves a plain file aside, so that what it holds can come back; an empty one of its mode takes
/// its place. The result is where it is, for bring_back; empty if nothing has been moved: the file
/// is empty, can't be written, or isn't there.
std::string set_aside(const std::string& path);
void bring_back(const std::string& path, const std::string& aside);

/// What writes the file `path` first has the name path, ".", the number of the process and ".part".
std::string part_name(const std::string& path);

/// Whether a name is one of these for a file of the name `file`.
bool is_part_of(std::string_view name, std::string_view file);

/// Removes the plain files that processes that have been killed have left under such names of this
/// file and of its backup. replace_file does that too.
void clear_parts(const std::string& path);

}  // namespace orvanel
