// picture_import.h: every file that the user opens: pictures become a command that draws them, all
// else runs into the module as it is. Main thread.

#pragma once

#include <cstdint>
#include <string_view>

namespace orvanel {

/// Tells what a file is and, for a picture, makes `ESC U L` with its dots in picture_command: above
/// 0 the length of that command; 0 nothing to feed, the file can't be opened or a message told why
/// the picture was refused; below 0 the file is no picture. The command that a running feed reads
/// stays untouched until open_feed swaps it.
int picture_load(std::string_view path, std::uint8_t x, std::uint8_t y);

/// Opens a file, whose path may stand in quotes, with its picture at module dot x, y.
void open_feed(std::string_view path, int x, int y);

/// A file was dropped on the window, at window pixels. Nothing while a feed runs; while a box is
/// open it waits until that is closed.
void drop_file(std::string_view path, int px, int py);

}  // namespace orvanel
