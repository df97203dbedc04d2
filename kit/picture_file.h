// picture_file.h: pictures out of PNG, 1-bit BMP and PBM files, and into PNG.

#pragma once

#include "base/gray_picture.h"

#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

/// Larger pictures are refused before their dots are looked at.
constexpr int max_picture_dots = 1 << 20;

/// Reads a picture by its content, whatever the file is called. What is transparent shows white
/// after it. The result is empty on success, else what is wrong with the file.
std::string decode_picture(std::span<const std::uint8_t> file, GrayPicture& picture);

/// The picture as a PNG; the same picture gives the same bytes. Throws std::bad_alloc.
Bytes encode_png(const GrayPicture& picture);

}  // namespace orvanel
