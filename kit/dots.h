// dots.h: pictures of set and clear dots as the module keeps them. docs/reference/formats.md,
// "Picture".

#pragma once

#include "firmware/core/language/eeprom_layout.h"
#include "kit/picture_file.h"

#include <span>

namespace orvanel {

/// Rows of dots, each on bytes of its own, the leftmost dot in bit 7, top row first.
struct Dots {
    int width, height;
    Bytes rows;
};

/// All clear.
Dots blank_dots(int width, int height);

/// Whether dot x, y is set; false outside.
bool dot_at(const Dots& dots, int x, int y);

/// Sets dot x, y, which lies inside.
void set_dot(Dots& dots, int x, int y);

/// Whether the bits after the last dot of each row are clear.
bool is_clean(const Dots& dots);

/// What is darker than `percent` of white is set.
Dots by_threshold(const GrayPicture& picture, int percent);

/// Grays become patterns of an 8 x 8 grid.
Dots by_dither(const GrayPicture& picture);

/// Black and white.
GrayPicture gray_of(const Dots& dots);

/// The picture as the image holds it: width, height, rows. `second`, of the same size, makes it a
/// picture of two images; without one it is null.
Bytes picture_bytes(const Dots& dots, const Dots* second);

/// What a picture of the image holds.
struct PictureView {
    Dots first, second;  // second.height 0: a single image
};

/// Reads picture_bytes back; false if they don't hold a picture of at least one dot, or one that
/// picture_bytes would not write so. `size` is what it takes.
bool read_picture_bytes(std::span<const std::uint8_t> bytes, PictureView& view, std::size_t& size);

}  // namespace orvanel
