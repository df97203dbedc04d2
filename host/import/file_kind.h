// file_kind.h: what a file is by its name and its first bytes, where it would be taken for
// something that it isn't otherwise.

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace orvanel {

enum class FileKind : std::uint8_t {
    other,     // a stream of commands, a picture without a name of its own, an image, anything
    png,       // begins with the eight bytes of a PNG, whatever it is called
    bmp,       // begins as a BMP that says how long it is, and is
    kit,       // is called .kit and begins as a kit does (docs/reference/kit.md)
    scenario,  // is called .scn and begins with `scenario 1`
};

/// By the name and the start of the file, or all of it; that alone doesn't tell a BMP. The case of
/// the name's ending doesn't matter; a byte order mark, blank lines and comments may come first.
FileKind file_kind(std::string_view path, std::span<const std::uint8_t> start);

/// The same for a file by its path; `other` if it is no plain file that can be read.
FileKind kind_of_file(const std::string& path);

/// What to do with a scenario, for whoever opens one in a module.
std::string scenario_refusal(std::string_view path);

/// Empty if the file may be what it is taken for, else what it is and what to do with it. A file
/// that can't be read may be anything, and an image can hold anything.
std::string not_an_image(const std::string& path);
std::string not_a_kit(const std::string& path);

/// The same without the file's name.
std::string not_a_scenario(const std::string& path);

}  // namespace orvanel
