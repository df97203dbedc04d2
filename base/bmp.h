// bmp.h: what a BMP file says of itself, and where its rows stand. Nothing here judges: whoever
// reads one takes what it can use and refuses the rest.

#pragma once

#include "base/bytes.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace orvanel {

constexpr std::size_t bmp_file_head = 14;   // bytes before the picture's own head
constexpr std::size_t bmp_usual_head = 40;  // bytes of that, without extensions
constexpr std::size_t bmp_old_head = 12;    // the same in old files

/// What the heads say; what the file is too short to say is 0.
struct BmpHead {
    std::uint32_t file_size;     // bytes
    std::uint32_t rows_at;       // where the first row stands in the file
    std::uint32_t head_size;     // bytes of the picture's own head, after which the colours stand
    std::int32_t width, height;  // dots; a height below 0: the top row comes first, else the bottom
    std::uint32_t bits;          // of a dot
    std::uint32_t compression;   // 0 none
    std::uint32_t colours_used;  // 0 all that `bits` can number
};

/// By the places of the usual head, which longer ones share; and of the old one.
BmpHead bmp_head(std::span<const std::uint8_t> file);
BmpHead old_bmp_head(std::span<const std::uint8_t> file);

/// Bytes from one row to the next.
std::int64_t bmp_stride(const BmpHead& head);

/// Where row y stands in the file, counted from the top; that may be beyond its end.
std::int64_t bmp_row_at(const BmpHead& head, int y);

/// The colour of three bytes at `at`, blue first, as 0xRRGGBB. Bytes beyond the end are 0.
std::uint32_t bmp_colour(std::span<const std::uint8_t> file, std::size_t at);

/// A file of what follows its file head: a usual head of 1, 4 or 8 bits a dot, all the colours of
/// these, rows.
Bytes bmp_file(std::span<const std::uint8_t> block);

}  // namespace orvanel
