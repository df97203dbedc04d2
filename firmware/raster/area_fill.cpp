#include "firmware/raster/area_fill.h"

#include "base/bytes.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"
#include "firmware/raster/rows.h"

namespace orvanel {

// clang-format off
constinit const std::array<std::array<std::uint8_t, 8>, 16> pattern_table{{
    {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00},
    {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
    {0x88, 0x00, 0x22, 0x00, 0x88, 0x00, 0x22, 0x00},
    {0xAA, 0x00, 0xAA, 0x00, 0xAA, 0x00, 0xAA, 0x00},
    {0xAA, 0x55, 0xAA, 0x55, 0xAA, 0x55, 0xAA, 0x55},
    {0xFF, 0x55, 0xFF, 0x55, 0xFF, 0x55, 0xFF, 0x55},
    {0xFF, 0x77, 0xFF, 0xDD, 0xFF, 0x77, 0xFF, 0xDD},
    {0x88, 0x21, 0x08, 0x42, 0x10, 0x84, 0x21, 0x04},
    {0x88, 0x11, 0x22, 0x44, 0x88, 0x11, 0x22, 0x44},
    {0x44, 0x22, 0x11, 0x88, 0x44, 0x22, 0x11, 0x88},
    {0x11, 0x88, 0x88, 0x44, 0x44, 0x22, 0x22, 0x11},
    {0x11, 0x22, 0x22, 0x44, 0x44, 0x88, 0x88, 0x11},
    {0x03, 0x03, 0x84, 0x48, 0x30, 0x30, 0x48, 0x84},
    {0x99, 0x66, 0x66, 0x99, 0x99, 0x66, 0x66, 0x99},
    {0xE1, 0xE1, 0xE1, 0x1E, 0x1E, 0x1E, 0x1E, 0xE1},
    {0xEF, 0xC7, 0x83, 0x01, 0x83, 0xC7, 0xEF, 0xFF},
}};
// clang-format on

namespace {

using Pattern = std::array<std::uint8_t, 8>;

// Eight rows of the full width, after which every pattern repeats.
constexpr int block_bytes = 8 * plane_stride;

std::uint64_t pattern_dots(const Pattern& pattern, int y) {
    return pattern[static_cast<std::size_t>(y & 7)] * 0x0101010101010101u;
}

/// After how many rows the pattern repeats: 1 if all of them are equal, else 8.
int period_of(const Pattern& pattern) {
    return load_dots(pattern.data()) == pattern_dots(pattern, 0) ? 1 : 8;
}

void fill_window(const Window& window, int y1, int y2, const LinkRule& rule,
                 const Pattern& pattern) {
    std::uint8_t* column = work_plane + window.byte;
    const int period = period_of(pattern);
    for (int first = y1; first <= std::min(y1 + period - 1, y2); ++first) {
        const Change change = change_of(rule, pattern_dots(pattern, first), window.mask);
        for (int y = first; y <= y2; y += period) {
            std::uint8_t* at = column + y * plane_stride;
            if (both_planes) change_bytes(flash_plane_of(at), change);
            change_bytes(at, change);
        }
    }
}

/// Fills rows of the full width in blocks of eight, as one run of bytes, and returns the first row
/// that is left over.
int fill_blocks(int y1, int y2, const LinkRule& rule, const Pattern& pattern) {
    std::array<std::uint8_t, block_bytes> keep;
    std::array<std::uint8_t, block_bytes> flip;
    for (int i = 0; i < 8; ++i) {
        const Change change = change_of(rule, pattern_dots(pattern, y1 + i), all_dots);
        std::memset(&keep[static_cast<std::size_t>(i * plane_stride)],
                    static_cast<int>(change.keep & 0xFF), plane_stride);
        std::memset(&flip[static_cast<std::size_t>(i * plane_stride)],
                    static_cast<int>(change.flip & 0xFF), plane_stride);
    }
    const auto change_block = [&](std::uint8_t* at) {
        for (std::size_t i = 0; i < block_bytes; ++i)
            at[i] = static_cast<std::uint8_t>((at[i] & keep[i]) ^ flip[i]);
    };
    for (; y1 + 7 <= y2; y1 += 8) {
        std::uint8_t* at = work_plane + y1 * plane_stride;
        if (both_planes) change_block(flash_plane_of(at));
        change_block(at);
    }
    return y1;
}

}  // namespace

void fill_area(std::uint8_t mode, std::uint8_t pattern) {
    if (mode < link_set || mode > link_replace_inverse) return;
    const DrawArea area = on_glass(draw_area);
    if (is_empty(area)) return;

    const LinkRule& rule = link_rules[mode];
    const Pattern& rows = pattern_table[masked(pattern, 15)];
    int y1 = area.y1;
    if (area.x1 == 0 && area.x2 == last_x) y1 = fill_blocks(y1, area.y2, rule, rows);
    for_windows(area.x1, area.x2,
                [&](const Window& window) { fill_window(window, y1, area.y2, rule, rows); });
}

void draw_box(std::uint8_t pattern) {
    dirty_area = draw_area;
    both_planes = true;
    fill_area(link_set, pattern_solid);

    // At y2 = 0 there is no row above to shrink to; y1 is past it all the same, and the inside is
    // empty. A wrap to 255 would fill the glass.
    draw_area.x1 += 1;
    draw_area.x2 -= 1;
    draw_area.y1 = low8(draw_area.y1 + 1);
    draw_area.y2 = low8(std::max(draw_area.y2 - 1, 0));
    fill_area(link_replace, pattern);
    refresh_dirty();
}

void clear_area_command() {
    fill_area(link_replace, pattern_clear);
    refresh_area();
}

void set_area_command() {
    fill_area(link_replace, pattern_solid);
    refresh_area();
}

void invert_area_command() {
    fill_area(link_invert, pattern_solid);
    refresh_area();
}

void pattern_area_command() {
    if (params[0] == 0) return;  // on purpose: pattern 0 neither clears nor refreshes here
    fill_area(link_replace, params[0]);
    refresh_area();
}

void box_command() { draw_box(params[0]); }

}  // namespace orvanel
