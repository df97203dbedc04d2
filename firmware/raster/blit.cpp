#include "firmware/raster/blit.h"

#include "base/bytes.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/rows.h"
#include "firmware/raster/transpose.h"

#include <algorithm>

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

// As many rows as the display has, and room for the four bytes that a stretched byte may take at
// the end of the last one.
constinit std::array<std::uint8_t, plane_bytes + 4> stretched_rows{};

/// The 8 dots of a byte, each `zoom` (2..4) times, from bit 31 on.
constexpr std::uint32_t stretched(std::uint32_t byte, int zoom) {
    std::uint32_t dots = 0;
    for (int i = 0; i < 8 * zoom; ++i)
        dots |= (byte >> (7 - i / zoom) & 1) << (31 - i);
    return dots;
}
static_assert(stretched(0b10010001, 2) == 0b11'00'00'11'00'00'00'11u << 16);

constexpr auto stretch_table = [] {
    std::array<std::array<std::uint32_t, 256>, 3> table{};
    for (int zoom = 2; zoom <= 4; ++zoom)
        for (std::uint32_t byte = 0; byte < 256; ++byte)
            table[static_cast<std::size_t>(zoom - 2)][byte] = stretched(byte, zoom);
    return table;
}();

/// Puts the first `width` dots of a packed row, each `zoom` times, at `to`, and up to three bytes
/// after them.
void stretch_row(std::span<const std::uint8_t> row, int zoom, int width, std::uint8_t* to) {
    const auto& table = stretch_table[static_cast<std::size_t>(zoom - 2)];
    std::size_t at = 0;
    for (int left = stride_of(width); left > 0; left -= zoom, to += zoom, ++at) {
        const std::uint32_t dots = at < row.size() ? table[row[at]] : 0;
        for (int i = 0; i < 4; ++i)
            to[i] = static_cast<std::uint8_t>(dots >> (24 - 8 * i));
    }
}

/// Packed rows as they go to the planes, stretched in x already.
struct Source {
    std::span<const std::uint8_t> bytes;
    std::size_t stride;
};

/// The same for rows that repeat each dot blit_zoom_x times, of which `width` x `height` dots show.
Source stretch_rows(Source rows, int width, int height) {
    const auto stride = static_cast<std::size_t>(stride_of(width));
    std::size_t from = 0;
    std::uint8_t* to = stretched_rows.data();
    for (int y = 0; y < height; y += std::max<int>(blit_zoom_y, 1)) {
        stretch_row(rows.bytes.subspan(std::min(from, rows.bytes.size())), blit_zoom_x, width, to);
        from += rows.stride;
        to += stride;
    }
    return {stretched_rows, stride};
}

/// Draws what one window shows of the rows from draw_area.y1 to above `bottom`.
void blit_window(const Window& window, Source source, int bottom) {
    const LinkRule& rule = link_rules[blit_link & 7];
    const LinkRule& flash_rule = link_rules[blit_flash_link & 7];
    const bool flash = both_planes && blit_flash_link != link_none;
    const int column = 8 * window.byte - draw_area.x1;
    const int zoom_y = std::max<int>(blit_zoom_y, 1);

    std::size_t row = 0;
    for (int y = draw_area.y1; y < bottom; row += source.stride) {
        const std::uint64_t dots = dots_at(source.bytes, row, column);
        const Change change = change_of(rule, dots, window.mask);
        const Change flash_change = change_of(flash_rule, dots, window.mask);
        const int next_y = std::min(y + zoom_y, bottom);
        for (; y < next_y; ++y) {
            std::uint8_t* at = work_plane + plane_index(8 * window.byte, y);
            if (flash) change_bytes(flash_plane_of(at), flash_change);
            change_bytes(at, change);
        }
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

/// Turns the columns of a picture into rows of staging_buffer. With `clockwise` the leftmost
/// column, read upward, is the first row; else the rightmost, read downward.
void stage_columns(std::span<const std::uint8_t> rows, int width, int height, bool clockwise) {
    const int staged_rows = std::min(width, screen_height);
    const int staged_stride = stride_of(height);
    for (int group = 0; group < staged_stride; ++group) {
        for (int left = 0; left < width; left += 64) {
            std::array<std::uint64_t, 8> dots{};
            for (int i = 0; i < 8; ++i) {
                const int row = clockwise ? height - 1 - 8 * group - i : 8 * group + i;
                if (row >= 0 && row < height)
                    dots[static_cast<std::size_t>(i)] = load_dots_at(
                        rows, static_cast<std::size_t>(row * stride_of(width) + left / 8));
            }
            transpose_eight<1>(dots.data());
            for (int i = 0; i < std::min(width - left, 64); ++i) {
                const int row = clockwise ? left + i : width - 1 - left - i;
                if (row >= staged_rows) continue;
                staging_buffer[static_cast<std::size_t>(row * staged_stride + group)] =
                    low8(static_cast<std::int64_t>(dots[static_cast<std::size_t>(i % 8)] >>
                                                   (56 - i / 8 * 8)));
            }
        }
    }
}

/// Puts the rows upside down and each of them back to front.
void stage_upside_down(std::span<const std::uint8_t> rows, int width, int height) {
    const int stride = stride_of(width);
    const int padding = 8 * stride - width;
    const auto byte_at = [rows](int i) {
        const auto at = static_cast<std::size_t>(i);
        return at < rows.size() ? int{rows[at]} : 0;
    };
    std::size_t to = 0;
    for (int row = height - 1; row >= 0; --row) {
        for (int column = stride - 1; column >= 0; --column) {
            const int right = byte_at(row * stride + column);
            const int left = column > 0 ? byte_at(row * stride + column - 1) : 0;
            // Eight dots, counted from the row's right end so that the padding drops out.
            staging_buffer[to++] = reversed(low8((left << 8 | right) >> padding));
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

    Source source{rows, static_cast<std::size_t>(stride_of(picture_width))};
    if (blit_zoom_x > 1) source = stretch_rows(source, width, bottom - draw_area.y1);
    for_windows(x1, x1 + width - 1,
                [&](const Window& window) { blit_window(window, source, bottom); });
}

void stage_picture(std::span<const std::uint8_t> rows, std::uint8_t rotation) {
    const int width = picture_width;
    const int height = picture_height;
    rows = rows.first(std::min(rows.size(), staging_buffer.size()));
    switch (rotation & 3) {
    case 0:
        std::copy(rows.begin(), rows.end(), staging_buffer.begin());
        return;
    case 1:
        stage_columns(rows, width, height, false);
        break;
    case 2:
        stage_upside_down(rows, width, height);
        return;
    case 3:
        stage_columns(rows, width, height, true);
        break;
    }
    picture_width = height;
    picture_height = low8(std::min(width, screen_height));
}

void pack_area(std::span<std::uint8_t> target) {
    const DrawArea area = on_glass(draw_area);
    if (is_empty(area)) return;
    const int width = area.x2 - area.x1 + 1;
    // What lies after the packed rows stays as it is: a view of the clipboard shows it.
    const auto bytes = static_cast<std::size_t>((area.y2 - area.y1 + 1) * stride_of(width));
    target = target.first(std::min(bytes, target.size()));
    const std::span<const std::uint8_t> plane{work_plane, plane_bytes};
    for (int y = area.y1; y <= area.y2; ++y) {
        for (int x = area.x1; x <= area.x2; x += 64) {
            const int dots = std::min(area.x2 - x + 1, 64);
            const std::uint64_t mask = all_dots << (64 - dots);
            store_dots_at(target, dots_at(plane, plane_index(0, y), x) & mask);
            target =
                target.subspan(std::min(static_cast<std::size_t>(stride_of(dots)), target.size()));
        }
    }
}

}  // namespace orvanel
