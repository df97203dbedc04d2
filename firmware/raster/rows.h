// rows.h: rows of dots as 64-bit words, for whatever combines or copies more than a dot at a time.
// In a word the leftmost dot is the most significant bit, as in the bytes of a plane.

#pragma once

#include "firmware/core/ground/draw_area.h"
#include "firmware/raster/planes.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>

namespace orvanel {

constexpr std::uint64_t all_dots = ~std::uint64_t{0};
constexpr std::uint64_t no_dots = 0;

/// A word as its bytes lie in memory, from one with the leftmost dot in bit 63, and back.
inline std::uint64_t in_memory_order(std::uint64_t dots) {
    if constexpr (std::endian::native == std::endian::little) return __builtin_bswap64(dots);
    return dots;
}

/// 64 dots of the 8 bytes at `from`.
inline std::uint64_t load_dots(const std::uint8_t* from) {
    std::uint64_t bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    return in_memory_order(bytes);
}

inline void store_dots(std::uint8_t* to, std::uint64_t dots) {
    const std::uint64_t bytes = in_memory_order(dots);
    std::memcpy(to, &bytes, sizeof bytes);
}

/// 64 dots of the 8 bytes from `at` on, 0 for those after the end.
inline std::uint64_t load_dots_at(std::span<const std::uint8_t> bytes, std::size_t at) {
    const std::size_t size = bytes.size();
    if (at + 8 <= size) return load_dots(bytes.data() + at);
    if (at >= size) return 0;
    if (size >= 8) return load_dots(bytes.data() + size - 8) << 8 * (at + 8 - size);
    std::uint64_t dots = 0;
    for (std::size_t i = at; i < at + 8; ++i)
        dots = dots << 8 | (i < size ? bytes[i] : 0u);
    return dots;
}

/// 64 dots of the packed row that starts at byte `row`, from `column` (above -64) on: 0 for those
/// in front of the row and after the last byte.
inline std::uint64_t dots_at(std::span<const std::uint8_t> bytes, std::size_t row, int column) {
    if (column < 0) return load_dots_at(bytes, row) >> -column;
    const std::size_t at = row + static_cast<std::size_t>(column >> 3);
    const int bit = column & 7;
    const std::uint64_t dots = load_dots_at(bytes, at) << bit;
    if (bit == 0 || at + 8 >= bytes.size()) return dots;
    return dots | bytes[at + 8] >> (8 - bit);
}

/// The dots from column `first` to `last` of a word, of which only 0..63 lie in it.
constexpr std::uint64_t dots_between(int first, int last) {
    return all_dots >> std::max(first, 0) & all_dots << (63 - std::min(last, 63));
}

/// Up to 64 dots of a plane row: those of `mask` in the 8 bytes from `byte` on.
struct Window {
    int byte;  // 0..plane_stride - 8: a window never reaches out of its row
    std::uint64_t mask;
};

/// Calls work(window) for each window of the dots x1..x2 of a row (0..239), from left to right.
template <typename Work> void for_windows(int x1, int x2, Work work) {
    while (x1 <= x2) {
        const int byte = std::min(x1 >> 3, plane_stride - 8);
        work(Window{byte, dots_between(x1 - 8 * byte, x2 - 8 * byte)});
        x1 = 8 * byte + 64;
    }
}

/// What happens to up to 64 dots: those outside `keep` go, then those of `flip` turn.
struct Change {
    std::uint64_t keep;
    std::uint64_t flip;
};

/// The same on the 8 bytes at `at`, for a change in memory order.
inline void change_bytes(std::uint8_t* at, const Change& change) {
    std::uint64_t bytes;
    std::memcpy(&bytes, at, sizeof bytes);
    bytes = (bytes & change.keep) ^ change.flip;
    std::memcpy(at, &bytes, sizeof bytes);
}

/// A link mode in words, each all_dots or no_dots: which dots go, and which turn after that,
/// because the picture has them or because they lie in its box.
struct LinkRule {
    std::uint64_t drop_picture, drop_box, flip_picture, flip_box;
};

/// Modes 0 to 7, as area_fill.h and blit.h name them.
// clang-format off
constexpr std::array<LinkRule, 8> link_rules{{
    {no_dots,  no_dots,  no_dots,  no_dots},   // none
    {all_dots, no_dots,  all_dots, no_dots},   // set
    {all_dots, no_dots,  no_dots,  no_dots},   // clear
    {no_dots,  no_dots,  all_dots, no_dots},   // invert
    {no_dots,  all_dots, all_dots, no_dots},   // replace
    {no_dots,  all_dots, all_dots, all_dots},  // replace inverse
    {no_dots,  all_dots, no_dots,  no_dots},   // all clear
    {no_dots,  all_dots, no_dots,  all_dots},  // all set
}};
// clang-format on

/// The change, in memory order, that `picture` makes in the box of dots `box`.
inline Change change_of(const LinkRule& rule, std::uint64_t picture, std::uint64_t box) {
    picture &= box;
    const std::uint64_t drop = (picture & rule.drop_picture) | (box & rule.drop_box);
    const std::uint64_t flip = (picture & rule.flip_picture) ^ (box & rule.flip_box);
    return {in_memory_order(~drop), in_memory_order(flip)};
}

/// The part of an area that lies on the glass.
constexpr DrawArea on_glass(const DrawArea& area) {
    return {std::max(area.x1, 0), area.y1, std::min(area.x2, last_x),
            std::min(area.y2, std::uint8_t{last_y})};
}

constexpr bool is_empty(const DrawArea& area) { return area.x1 > area.x2 || area.y1 > area.y2; }

}  // namespace orvanel
