// image_file.h: the EEPROM image as a file, a plain copy of the block.

#pragma once

#include "base/safe_file.h"

#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

/// Makes an erased image of `size` bytes and fills its start from the file; a shorter file leaves
/// 0xFF after its end, a longer one is cut, of which image_notice tells. The result is empty on
/// success, else what went wrong, and the image is erased.
std::string load_image(const std::string& path, int size);

/// Writes `image`, so that a kill at any moment leaves the old file or the new one. An old file
/// that is longer gets a further name first, which keeps it. The result is empty on success, else
/// "cannot save", the path and the reason, and the old file stays.
std::string save_image(const std::string& path, std::span<const std::uint8_t> image, Backup backup);

/// What the user is to know: the file that was loaded is longer than the memory, or one that was
/// written over was and now has another name, and nobody has said so before. Empty for nothing;
/// who tells it clears it.
extern std::string image_notice;

}  // namespace orvanel
