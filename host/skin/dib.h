// dib.h: an image as a device-independent bitmap: a header, a colour table and rows stored bottom
// row first.

#pragma once

#include "base/bytes.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

/// One image. Places in `block` are offsets, so that a copy is one of its own.
struct Dib {
    Bytes block;           // a BMP file, or just what its own head begins
    std::size_t header;    // 40 bytes
    std::size_t colours;   // entries of blue, green, red, 0
    std::size_t bits;      // the rows, bottom row first
    std::uint32_t stride;  // bytes for each row, a multiple of 4
};

/// The most pixels that an image has on an axis. A file that tells of more is refused.
constexpr std::int32_t max_dib_side = 8192;

/// Takes over a BMP file as `dib`. The result is empty on success, else
/// why it is no image of 8 bits a pixel without compression whose colours and rows lie within the
/// file, whose rows stand bottom-up, and which has at least 2 x 1 pixels; `dib` then stays.
std::string dib_attach(Dib& dib, Bytes bmp);

/// A new image of zeros. `colour_count` is 2, 16 or 256; false, and `dib` stays, for
/// any other, or for a side outside 1..max_dib_side.
bool dib_create(Dib& dib, int width, int height, int colour_count);

/// Pixels of the image on each axis.
int dib_columns(const Dib& dib);
int dib_rows(const Dib& dib);

/// The pixels of row y, counted from the top, 0..dib_rows - 1, and the bytes that pad them.
std::span<const std::uint8_t> dib_row(const Dib& dib, int y);

/// Where that row begins in `block`.
std::size_t dib_row_at(const Dib& dib, int y);

/// One pixel of an image of 8 bits a pixel, y counted from the top row; the place lies in the
/// image.
std::uint8_t dib_get(const Dib& dib, int x, int y);
void dib_put(Dib& dib, int x, int y, std::uint8_t value);

/// Colour `index` of the table as 0xRRGGBB. One beyond the table is black, and setting it nothing.
std::uint32_t dib_colour(const Dib& dib, int index);
void dib_set_colour(Dib& dib, int index, std::uint32_t colour);

/// Makes `target` the twin of an image of 8 bits a pixel, turned by 90 degrees clockwise: its pixel
/// x, y comes to height - 1 - y, x. The colours stay.
void dib_turn(Dib& target, const Dib& source);

}  // namespace orvanel
