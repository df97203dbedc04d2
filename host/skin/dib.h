// dib.h: an image as a device-independent bitmap: a header, a colour table and rows stored bottom
// row first. The skin is one with 8 bits a pixel, each display image one with 1 bit.

#pragma once

#include "firmware/raster/refresh.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orvanel {

/// A rectangle of skin dots, right and bottom inclusive; empty if they lie before left or top.
struct SkinRect {
    int left, top, right, bottom;
};

constexpr bool is_empty(SkinRect r) { return r.right < r.left || r.bottom < r.top; }

/// What lies in both.
constexpr SkinRect common_part(SkinRect a, SkinRect b) {
    return {a.left > b.left ? a.left : b.left, a.top > b.top ? a.top : b.top,
            a.right < b.right ? a.right : b.right, a.bottom < b.bottom ? a.bottom : b.bottom};
}

/// One image. Places in `block` are offsets, so that a copy is one of its own.
struct Dib {
    std::vector<std::uint8_t> block;  // a BMP file, or just what its header begins
    std::size_t header;               // 40 bytes
    std::size_t colours;              // entries of blue, green, red, 0
    std::size_t bits;                 // the rows, bottom row first
    std::uint32_t stride;             // bytes for each row, a multiple of 4
    std::uint32_t scale;              // image pixels for each dot on each axis, above 0
    std::uint32_t width, height;      // of a skin, in dots
    SkinRect area;                    // where the image lies, in skin dots
    // The four pieces of a skin around its glass.
    SkinRect band_left, band_right, band_top, band_bottom;
    // A display image: the dots as the firmware draws them, one of the two; the rows in `block`
    // stay 0, but see dib_block. nullptr on other images.
    const UprightImage* upright;
    const RotatedImage* rotated;
};

/// The most pixels that an image has on an axis. A file that tells of more is refused.
constexpr std::int32_t max_dib_side = 8192;

/// Takes over a BMP file as `dib`, with scale 1 and no area. The result is empty on success, else
/// why it is no image of 8 bits a pixel without compression whose colours and rows lie within the
/// file, whose rows stand bottom-up, and which has at least 2 x 1 pixels; `dib` then stays.
std::string dib_attach(Dib& dib, std::vector<std::uint8_t> bmp);

/// A new image of zeros, with scale 1. `colour_count` is 2, 16 or 256; false, and `dib` stays, for
/// any other, or for a side outside 1..max_dib_side.
bool dib_create(Dib& dib, int width, int height, int colour_count);

/// Pixels of the image on each axis.
int dib_columns(const Dib& dib);
int dib_rows(const Dib& dib);

/// The pixels of row y, counted from the top, 0..dib_rows - 1, and the bytes that pad them.
std::span<const std::uint8_t> dib_row(const Dib& dib, int y);

/// One pixel of an image of 8 bits a pixel, y counted from the top row; the place lies in the
/// image.
std::uint8_t dib_get(const Dib& dib, int x, int y);
void dib_put(Dib& dib, int x, int y, std::uint8_t value);

/// Colour `index` of the table as 0xRRGGBB. One beyond the table is black, and setting it nothing.
std::uint32_t dib_colour(const Dib& dib, int index);
void dib_set_colour(Dib& dib, int index, std::uint32_t colour);

/// Makes `target` the twin of an image of 8 bits a pixel, turned by 90 degrees clockwise: its pixel
/// x, y comes to height - 1 - y, x. Colours and scale are the source's, width and height its
/// swapped, the area the whole of it.
void dib_turn(Dib& target, const Dib& source);

/// Sets the four bands: what `dib.area` leaves around the glass.
void dib_set_bands(Dib& dib, SkinRect glass);

/// The words of row y, counted from the top, of a display image: leftmost dot in the most
/// significant bit of the first.
std::span<const std::atomic<std::uint64_t>> dot_row(const Dib& display, int y);

/// A display image as a whole block, with its dots as they are now: 40 bytes of header, two
/// colours, rows of `stride` bytes.
std::vector<std::uint8_t> dib_block(const Dib& display);

/// Such a block as a BMP file: behind a file header.
std::vector<std::uint8_t> bmp_file(std::span<const std::uint8_t> block);

}  // namespace orvanel
