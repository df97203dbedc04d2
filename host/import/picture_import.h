// picture_import.h: every file that the user opens: pictures become a command that draws them, a
// kit becomes the stream that programs it, a scenario is refused, and all else runs into the module
// as it is. Main thread.
//
// A picture is a raw module bitmap (docs/reference/formats.md), which nothing but its length tells,
// a PNG, or a BMP of one bit a dot with a header of 40 bytes.

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace orvanel {

/// The bytes of a file that are looked at, unless it is a PNG, of which all are. The largest BMP
/// that passes has 4158, so what is cut here is no picture of ours.
constexpr std::size_t picture_file_size = 4200;

/// Tells what a file is, by its first picture_file_size bytes or all that it has, and for a picture
/// makes `ESC U L` with its dots in picture_command, its upper left corner at x, y or as far left
/// and up as it takes to stay on the glass. The result is above 0 the length of that command; 0 if
/// a message said why the picture was refused; below 0 if the file is no picture.
int picture_convert(std::span<const std::uint8_t> file, std::uint8_t x, std::uint8_t y);

/// The same for a file by its path, taken as it comes; 0 too if it can't be opened.
int picture_load(std::string_view path, std::uint8_t x, std::uint8_t y);

/// What the last picture_convert made. A second buffer holds the command that a running feed reads:
/// they change places in open_feed alone.
std::span<const std::uint8_t> picture_command();

/// Opens a file, whose path may stand in quotes, with its picture at module dot x, y. It replaces a
/// running feed at once, unless it can't be opened or is refused. Building a kit may take a while,
/// for which all else waits; before the first one of a run the program's folder keeps the former
/// image.
void open_feed(std::string_view path, int x, int y);

/// A file was dropped on the window, at window pixels. Nothing while a feed runs; while a box is
/// open it waits until that is closed.
void drop_file(std::string_view path, int px, int py);

}  // namespace orvanel
