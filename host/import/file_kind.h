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
    kit,       // is called .kit and begins as a kit does (docs/reference/kit.md)
    scenario,  // is called .scn and begins with `scenario 1`
};

/// `start` is the start of the file, or all of it. The case of the name's ending doesn't matter;
/// blank lines and comments may come first.
FileKind file_kind(std::string_view path, std::span<const std::uint8_t> start);

/// What to do with a scenario, for whoever opens one in a module.
std::string scenario_refusal(std::string_view path);

/// Empty if the file may be an EEPROM image, which can hold anything, else what it is and what to
/// do with it. A file that can't be read may be one.
std::string not_an_image(const std::string& path);

}  // namespace orvanel
