#include "host/skin/outline.h"

#include "base/bytes.h"
#include "host/skin/skin.h"
#include "host/skin/view.h"

#include <algorithm>
#include <cstddef>
#include <span>

namespace orvanel {

namespace {

/// Clears the bits begin..end - 1 of a row of bits.
void clear_bits(std::span<std::uint8_t> row, int begin, int end) {
    for (int x = begin; x < end;) {
        const auto at = static_cast<std::size_t>(x / 8);
        const int in_byte = std::min(8 - x % 8, end - x);
        const int bits = 0xFF << (8 - in_byte) & 0xFF;
        row[at] = low8(row[at] & ~(bits >> x % 8));
        x += in_byte;
    }
}

}  // namespace

Outline whole_window() {
    const int width = window_width();
    const int height = window_height();
    const auto stride = static_cast<std::size_t>(width + 7) / 8;
    Outline outline{width, height, {}};
    outline.rows.assign(stride * static_cast<std::size_t>(height), 0xFF);
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y)
        clear_bits(std::span(outline.rows).subspan(y * stride, stride), width,
                   static_cast<int>(stride) * 8);
    return outline;
}

Outline skin_outline() {
    const SkinImage& skin = *view_skin;
    Outline outline = whole_window();
    const auto stride = static_cast<std::size_t>(outline.width + 7) / 8;
    const int z = dot_pixels();
    const auto s = static_cast<int>(skin.scale);
    const auto column = [&](int x) { return std::min(x * z / s, outline.width); };
    const int columns = dib_columns(skin);
    for (int y = 0; y < dib_rows(skin); ++y) {
        const auto pixels = dib_row(skin, y);
        const int bottom = std::min((y + 1) * z / s, outline.height);
        for (int row = y * z / s; row < bottom; ++row)
            // Neighbours that are taken away join without a gap: a run of them is one rectangle.
            for (int x = 0; x < columns; ++x) {
                const int begin = x;
                while (x < columns && pixels[static_cast<std::size_t>(x)] == key_index)
                    ++x;
                const std::size_t at = static_cast<std::size_t>(row) * stride;
                clear_bits(std::span(outline.rows).subspan(at, stride), column(begin), column(x));
            }
    }
    return outline;
}

}  // namespace orvanel
