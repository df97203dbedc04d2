// png.h: pictures as PNG, in and out of memory.

#pragma once

#include "base/gray_picture.h"

#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

/// Whether it begins as every PNG does.
bool is_png(std::span<const std::uint8_t> file);

/// The width and height that a PNG says it has; what the file is too short to say is 0.
struct PngSize {
    std::uint32_t width, height;
};
PngSize png_size(std::span<const std::uint8_t> file);

/// Reads a PNG of any kind; what lets light through shows white below it. Takes five bytes for
/// each dot of a size that `size_fault` lets pass. The result is empty on success, else what is
/// wrong with the file.
std::string read_png(std::span<const std::uint8_t> file, SizeFault size_fault,
                     GrayPicture& picture);

/// A picture of 8 bits a sample, top row first.
struct PngPixels {
    int width, height;  // above 0
    int samples;        // of a pixel: 1 gray, or a place in `palette`; 3 red, green, blue
    std::span<const std::uint8_t> pixels;   // width * height * samples
    std::span<const std::uint8_t> palette;  // red, green, blue of each colour; empty: there is none
};

/// Writes it; the same picture gives the same bytes. The result is empty on success, else what went
/// wrong, which is that there is no memory left.
std::string write_png(const PngPixels& picture, Bytes& file);

/// The same for dots in packed rows, a set one black: a gray picture of 1 bit a dot.
std::string write_png_dots(int width, int height, std::span<const std::uint8_t> rows, Bytes& file);

}  // namespace orvanel
