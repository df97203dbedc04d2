// picture.h: the upright glass as a picture: taken from the module, and in and out of files.

#pragma once

#include "firmware/raster/planes.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace orvanel {

/// Which of the two upright images.
enum class Shown : std::uint8_t { present_phase, main, flash };

/// What the glass shows, laid out as a plane.
BitPlane take_glass(Shown shown);

/// Whether the glass shows exactly these dots. Looks no further than the first that differs.
bool glass_is(const BitPlane& dots, Shown shown);

/// Whether the path ends in .png or .pbm, in either case.
bool is_picture_path(const std::string& path);

/// Reads a picture of exactly 240 x 128 dots, a .png of any kind or a binary .pbm; a dot darker
/// than half is set. The result is empty on success, else what is wrong with the file.
std::string read_picture(const std::string& path, BitPlane& dots);

/// Writes the dots as the path's ending says: a 1-bit gray .png or a binary .pbm, a set dot black.
/// The same dots give the same bytes. The result is empty on success, else what went wrong.
std::string write_picture(const std::string& path, const BitPlane& dots);

/// Writes expected, actual and their difference side by side, enlarged, as a .png. A dot that is
/// missing is blue in the difference, one too many red. Result as above.
std::string write_difference(const std::string& path, const BitPlane& expected,
                             const BitPlane& actual);

}  // namespace orvanel
