#include "firmware/raster/blit.h"

#include "firmware/core/bytes.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/rows.h"

#include <algorithm>
#include <utility>

namespace orvanel {

constinit std::int32_t picture_width = 0;
constinit std::uint8_t picture_height = 0;
constinit std::uint8_t blit_zoom_x = 0;
constinit std::uint8_t blit_zoom_y = 0;
constinit std::uint8_t blit_link = 0;
constinit std::uint8_t blit_flash_link = 0;
constinit std::uint8_t flash_attr = 0;
constinit std::int32_t blit_width = 0;
constinit std::uint8_t blit_height = 0;
constinit std::array<std::uint8_t, 255 * 32> staging_buffer{};

std::uint8_t flash_link_of(std::uint8_t link, std::uint8_t attr) {
    // clang-format off
    constexpr std::array<std::uint8_t, 8> blank{
        link_none, link_none, link_none, link_none,
        link_all_clear, link_all_set, link_all_clear, link_all_set};
    constexpr std::array<std::uint8_t, 8> inverse{
        link_none, link_clear, link_set, link_none,
        link_replace_inverse, link_replace, link_all_clear, link_all_set};
    // clang-format on
    if (attr == flash_blank) return blank[link & 7];
    if (attr == flash_inverse) return inverse[link & 7];
    return link & 7;
}

void prepare_blit() {
    const int x1 = draw_area.x1;
    const int y1 = draw_area.y1;
    const int x2 = std::min(x1 + picture_width * blit_zoom_x - 1, last_x);
    const int y2 = std::min(y1 + picture_height * blit_zoom_y - 1, last_y);
    blit_flash_link = flash_link_of(blit_link, flash_attr);
    blit_width = std::max(x2 - x1 + 1, 0);
    blit_height = low8(std::max(y2 - y1 + 1, 0));
    draw_area.x2 = x2;
    draw_area.y2 = low8(std::max(y2, 0));
    // Without rows the box is empty, also at the upper edge, where no y2 lies above y1.
    if (blit_height == 0) draw_area.x2 = x1 - 1;
}

void set_blit_area(int w, int h) {
    draw_area.x2 = draw_area.x1 + w - 1;
    draw_area.y2 = low8(draw_area.y1 + h - 1);
    blit_width = w;
    blit_height = low8(h);
}

namespace {

// The longest row of the display, and room behind it to load 64 dots from any of its bytes.
using RowBuffer = std::array<std::uint8_t, plane_stride + 9>;

constinit RowBuffer row_buffer{};

/// The 8 dots of a byte, each `zoom` (2..4) times, as 8 * zoom bits.
constexpr std::uint32_t stretched(std::uint32_t byte, int zoom) {
    std::uint32_t dots = 0;
    for (int i = 0; i < 8 * zoom; ++i)
        dots = dots << 1 | (byte >> (7 - i / zoom) & 1);
    return dots;
}
static_assert(stretched(0b10010001, 2) == 0b11'00'00'11'00'00'00'11);

constexpr auto stretch_table = [] {
    std::array<std::array<std::uint32_t, 256>, 3> table{};
    for (int zoom = 2; zoom <= 4; ++zoom)
        for (std::uint32_t byte = 0; byte < 256; ++byte)
            table[static_cast<std::size_t>(zoom - 2)][byte] = stretched(byte, zoom);
    return table;
}();

/// Puts the first `width` dots of the packed row at `row`, each `zoom` times, into row_buffer.
void stretch_row(std::span<const std::uint8_t> bytes, std::size_t row, int zoom, int width) {
    row_buffer = {};
    const std::span<const std::uint8_t> dots = bytes.subspan(std::min(row, bytes.size()));
    if (zoom > 4) {
        for (int i = 0; i < width; ++i) {
            const std::size_t at = plane_index(i / zoom, 0);
            if (at < dots.size() && (dots[at] & dot_mask(i / zoom)) != 0)
                row_buffer[plane_index(i, 0)] |= dot_mask(i);
        }
        return;
    }
    const auto& table = stretch_table[static_cast<std::size_t>(zoom - 2)];
    std::uint8_t* to = row_buffer.data();
    int left = stride_of(width);
    for (std::size_t i = 0; left > 0 && i < dots.size(); ++i, left -= zoom) {
        const std::uint32_t bits = table[dots[i]];
        for (int shift = 8 * (zoom - 1); shift >= 0; shift -= 8)
            *to++ = static_cast<std::uint8_t>(bits >> shift);
    }
}

constexpr std::uint8_t reversed(std::uint8_t byte) {
    int bits = byte;
    bits = (bits & 0x0F) << 4 | bits >> 4;
    bits = (bits & 0x33) << 2 | (bits >> 2 & 0x33);
    bits = (bits & 0x55) << 1 | (bits >> 1 & 0x55);
    return static_cast<std::uint8_t>(bits);
}
static_assert(reversed(0b11100010) == 0b01000111);

/// Transposes 8 rows of 8 dots, the upper left dot in bit 63: each pass swaps two corners of ever
/// larger squares.
constexpr std::uint64_t transposed(std::uint64_t tile) {
    const auto swap_corners = [&tile](int distance, std::uint64_t corners) {
        const std::uint64_t differing = (tile ^ tile >> distance) & corners;
        tile ^= differing ^ differing << distance;
    };
    swap_corners(7, 0x00AA00AA00AA00AA);
    swap_corners(14, 0x0000CCCC0000CCCC);
    swap_corners(28, 0x00000000F0F0F0F0);
    return tile;
}
static_assert(transposed(0xFF00000000000000) == 0x8080808080808080);

/// A packed picture, read within its bounds.
struct Packed {
    std::span<const std::uint8_t> bytes;
    int width, height;
};

std::uint8_t byte_of(const Packed& picture, int row, int column) {
    if (row < 0 || row >= picture.height) return 0;
    const auto at = static_cast<std::size_t>(row * stride_of(picture.width) + column);
    return at < picture.bytes.size() ? picture.bytes[at] : std::uint8_t{0};
}

/// Turns the columns of a picture into rows of staging_buffer. With `clockwise` the leftmost
/// column, read upward, is the first row; else the rightmost, read downward.
void stage_columns(const Packed& picture, bool clockwise) {
    const int rows = std::min(picture.width, screen_height);
    const int stride = stride_of(picture.height);
    for (int column = 0; column < stride_of(picture.width); ++column) {
        for (int group = 0; group < stride; ++group) {
            std::uint64_t tile = 0;
            for (int i = 8 * group; i < 8 * group + 8; ++i)
                tile = tile << 8 | byte_of(picture, clockwise ? picture.height - 1 - i : i, column);
            tile = transposed(tile);
            for (int i = 8 * column; i < 8 * column + 8; ++i, tile <<= 8) {
                const int row = clockwise ? i : picture.width - 1 - i;
                if (row >= 0 && row < rows)
                    staging_buffer[static_cast<std::size_t>(row * stride + group)] =
                        static_cast<std::uint8_t>(tile >> 56);
            }
        }
    }
}

/// Puts the rows upside down and each of them back to front.
void stage_upside_down(const Packed& picture) {
    const int stride = stride_of(picture.width);
    const int padding = 8 * stride - picture.width;
    std::size_t at = 0;
    for (int row = picture.height - 1; row >= 0; --row) {
        for (int column = stride - 1; column >= 0; --column) {
            const int right = byte_of(picture, row, column);
            const int left = column > 0 ? byte_of(picture, row, column - 1) : 0;
            // The 8 dots that end `padding` dots left of this byte's end.
            staging_buffer[at++] = reversed(low8((left << 8 | right) >> padding));
        }
    }
}

/// Stores 64 dots at the start of `to`, or as many bytes of them as it holds.
void store_dots_at(std::span<std::uint8_t> to, std::uint64_t dots) {
    if (to.size() >= 8) return store_dots(to.data(), dots);
    for (std::uint8_t& byte : to) {
        byte = static_cast<std::uint8_t>(dots >> 56);
        dots <<= 8;
    }
}

}  // namespace

void blit(std::span<const std::uint8_t> rows) {
    const int x1 = draw_area.x1;
    const int bottom = std::min(draw_area.y1 + blit_height, screen_height);
    const int width = std::min(blit_width, screen_width - x1);
    if (x1 < 0 || width <= 0) return;

    const bool flash = both_planes && blit_flash_link != link_none;
    const LinkRule& rule = link_rules[blit_link & 7];
    const LinkRule& flash_rule = link_rules[blit_flash_link & 7];
    const Windows windows = windows_of(x1, x1 + width - 1);
    const int zoom_x = std::max<int>(blit_zoom_x, 1);
    const int zoom_y = std::max<int>(blit_zoom_y, 1);

    std::size_t row = 0;
    for (int y = draw_area.y1; y < bottom; y += zoom_y) {
        if (zoom_x > 1) stretch_row(rows, row, zoom_x, width);
        const int next_y = std::min(y + zoom_y, bottom);
        for (const Window& window : windows) {
            const int column = 8 * window.byte - x1;
            const std::uint64_t picture =
                zoom_x > 1 ? dots_at(row_buffer, 0, column) : dots_at(rows, row, column);
            const Change change = change_of(rule, picture, window.mask);
            const Change flash_change = change_of(flash_rule, picture, window.mask);
            for (int line = y; line < next_y; ++line) {
                std::uint8_t* at = work_plane + line * plane_stride + window.byte;
                if (flash) change_bytes(flash_plane_of(at), flash_change);
                change_bytes(at, change);
            }
        }
        row += static_cast<std::size_t>(stride_of(picture_width));
    }
}

void stage_picture(std::span<const std::uint8_t> rows, std::uint8_t rotation) {
    const Packed picture{rows, picture_width, picture_height};
    if ((rotation & 3) == 0) std::copy(rows.begin(), rows.end(), staging_buffer.begin());
    if ((rotation & 3) == 2) stage_upside_down(picture);
    if ((rotation & 1) == 0) return;

    stage_columns(picture, (rotation & 3) == 3);
    picture_width = picture.height;
    picture_height = low8(std::min(picture.width, screen_height));
}

void pack_area(std::span<std::uint8_t> target) {
    const DrawArea area = on_glass(draw_area);
    if (is_empty(area)) return;
    const int width = area.x2 - area.x1 + 1;
    // What lies behind the packed rows stays as it is: a view of the clipboard shows it.
    const auto bytes = static_cast<std::size_t>((area.y2 - area.y1 + 1) * stride_of(width));
    target = target.first(std::min(bytes, target.size()));
    const std::span<const std::uint8_t> plane{work_plane, plane_bytes};
    for (int y = area.y1; y <= area.y2; ++y) {
        for (int x = area.x1; x <= area.x2; x += 64) {
            const int dots = std::min(area.x2 - x + 1, 64);
            const std::uint64_t mask = yes << (64 - dots);
            store_dots_at(target, dots_at(plane, plane_index(0, y), x) & mask);
            target =
                target.subspan(std::min(static_cast<std::size_t>(stride_of(dots)), target.size()));
        }
    }
}

}  // namespace orvanel
