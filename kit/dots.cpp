#include "kit/dots.h"

#include "base/bytes.h"

#include <algorithm>
#include <array>

namespace orvanel {

namespace {

// The order in which an 8 x 8 grid fills as the picture gets darker.
constexpr std::array<std::array<std::uint8_t, 8>, 8> fill_order{{
    {0, 32, 8, 40, 2, 34, 10, 42},
    {48, 16, 56, 24, 50, 18, 58, 26},
    {12, 44, 4, 36, 14, 46, 6, 38},
    {60, 28, 52, 20, 62, 30, 54, 22},
    {3, 35, 11, 43, 1, 33, 9, 41},
    {51, 19, 59, 27, 49, 17, 57, 25},
    {15, 47, 7, 39, 13, 45, 5, 37},
    {63, 31, 55, 23, 61, 29, 53, 21},
}};

std::size_t byte_at(const Dots& dots, int x, int y) {
    return static_cast<std::size_t>(y * stride_of(dots.width) + x / 8);
}

template <typename IsSet> Dots dots_where(const GrayPicture& picture, IsSet is_set) {
    Dots dots = blank_dots(picture.width, picture.height);
    std::size_t i = 0;
    for (int y = 0; y < dots.height; ++y)
        for (int x = 0; x < dots.width; ++x)
            if (is_set(picture.light[i++], x, y)) set_dot(dots, x, y);
    return dots;
}

/// `height` rows from the one numbered `first`.
Dots rows_of(const Dots& dots, int first, int height) {
    Dots part = blank_dots(dots.width, height);
    const auto start = dots.rows.begin() + first * stride_of(dots.width);
    std::copy_n(start, part.rows.size(), part.rows.begin());
    return part;
}

}  // namespace

Dots blank_dots(int width, int height) {
    return {width, height, Bytes(static_cast<std::size_t>(stride_of(width) * height))};
}

bool dot_at(const Dots& dots, int x, int y) {
    if (x < 0 || x >= dots.width || y < 0 || y >= dots.height) return false;
    return (dots.rows[byte_at(dots, x, y)] >> (7 - x % 8) & 1) != 0;
}

void set_dot(Dots& dots, int x, int y) {
    std::uint8_t& byte = dots.rows[byte_at(dots, x, y)];
    byte = static_cast<std::uint8_t>(byte | 0x80 >> x % 8);
}

bool is_clean(const Dots& dots) {
    const int spare = stride_of(dots.width) * 8 - dots.width;
    for (int y = 0; y < dots.height; ++y)
        if ((dots.rows[byte_at(dots, dots.width - 1, y)] & ((1 << spare) - 1)) != 0) return false;
    return true;
}

Dots by_threshold(const GrayPicture& picture, int percent) {
    return dots_where(picture,
                      [percent](int light, int, int) { return light * 100 < percent * 255; });
}

Dots by_dither(const GrayPicture& picture) {
    return dots_where(picture, [](int light, int x, int y) {
        const int order =
            fill_order[static_cast<std::size_t>(y % 8)][static_cast<std::size_t>(x % 8)];
        // 64 steps of the grid, each taken at its middle.
        return light * 128 < (2 * order + 1) * 255;
    });
}

GrayPicture gray_of(const Dots& dots) {
    GrayPicture picture{dots.width, dots.height, {}};
    for (int y = 0; y < dots.height; ++y)
        for (int x = 0; x < dots.width; ++x)
            picture.light.push_back(dot_at(dots, x, y) ? 0 : 255);
    return picture;
}

Bytes picture_bytes(const Dots& dots, const Dots* second) {
    const int height = second == nullptr ? dots.height : two_images_of(dots.height);
    Bytes bytes;
    bytes.reserve(picture_head_size + 2 * dots.rows.size());
    bytes.push_back(low8(dots.width));
    bytes.push_back(low8(height));
    bytes.insert(bytes.end(), dots.rows.begin(), dots.rows.end());
    if (second != nullptr) bytes.insert(bytes.end(), second->rows.begin(), second->rows.end());
    return bytes;
}

bool read_picture_bytes(std::span<const std::uint8_t> bytes, PictureView& view, std::size_t& size) {
    if (bytes.size() < picture_head_size) return false;
    const int width = bytes[0];
    const bool both = has_two_images(bytes[1]);
    const int rows = picture_rows(bytes[1]);
    if (width == 0 || rows == 0 || (both && rows % 2 != 0)) return false;
    Dots all = blank_dots(width, rows);
    size = picture_head_size + all.rows.size();
    if (bytes.size() < size) return false;
    std::copy_n(bytes.begin() + picture_head_size, all.rows.size(), all.rows.begin());
    if (!is_clean(all)) return false;
    const int height = both ? rows / 2 : rows;
    view.first = rows_of(all, 0, height);
    view.second = both ? rows_of(all, height, height) : blank_dots(width, 0);
    return true;
}

}  // namespace orvanel
