// window_picture.h: what the window shows, and its outline, as files.

#pragma once

#include "host/skin/outline.h"

#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

/// Writes the client area as compose_window makes it: a .png of window_width() x window_height()
/// pixels, 8 bits each of red, green and blue. The same pixels give the same bytes. The result is
/// empty on success, else what went wrong.
std::string write_window(const std::string& path);

/// Writes the outline as a binary .pbm, a pixel of the window black. Result as above.
std::string write_outline(const std::string& path, const Outline& outline);

/// Writes a picture as the clipboard gets it (seam/window_system.h) as a .bmp. Result as
/// above.
std::string write_clipboard(const std::string& path, std::span<const std::uint8_t> dib);

}  // namespace orvanel
