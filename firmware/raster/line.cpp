#include "firmware/raster/line.h"

#include "base/bytes.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"
#include "firmware/raster/rows.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace orvanel {

constinit std::uint8_t pen_width = 0;
constinit std::uint8_t pen_height = 0;
constinit std::uint8_t pen_link = 0;
constinit std::int32_t last_point_x = 0;
constinit std::uint8_t last_point_y = 0;

void power_on_pen() {
    pen_width = 1;
    pen_height = 1;
    pen_link = link_set;
    last_point_x = 0;
    last_point_y = 0;
}

namespace {

struct Span {
    int low, high;  // inclusive, low > high: empty
};

/// The dots that a pen of `size` covers around p, on a display from 0 to `limit`. The upper end
/// comes from the uncut lower one: a pen at an edge is cut, not shifted.
constexpr Span pen_span(int p, int size, int limit) {
    const int low = p - ((size - 1) >> 1);
    return {std::max(low, 0), std::min(low + size - 1, limit)};
}
static_assert(pen_span(5, 4, last_x).low == 4 && pen_span(5, 4, last_x).high == 7);
static_assert(pen_span(0, 4, last_x).low == 0 && pen_span(0, 4, last_x).high == 2);
static_assert(pen_span(5, 0, last_x).low == 6 && pen_span(5, 0, last_x).high == 5);

DrawArea area_of(Span x, Span y) { return {x.low, low8(y.low), x.high, low8(y.high)}; }

void fill_box(Span x, Span y) {
    draw_area = area_of(x, y);
    fill_area(pen_link, pattern_solid);
}

void draw_horizontal() {
    Span x{draw_area.x1, draw_area.x2};
    Span y{draw_area.y1, draw_area.y1};
    if (x.low > x.high) std::swap(x.low, x.high);
    if (pen_height > 1) y = pen_span(y.low, pen_height, last_y);
    dirty_area = area_of(x, y);
    fill_box(x, y);
}

void draw_vertical() {
    Span x{draw_area.x1, draw_area.x1};
    Span y{draw_area.y1, draw_area.y2};
    if (y.low > y.high) std::swap(y.low, y.high);
    if (pen_width > 1) x = pen_span(x.low, pen_width, last_x);
    dirty_area = area_of(x, y);
    fill_box(x, y);
}

/// The extent of a sloped line across its run, from that of its dots.
Span extent(Span dots, int size, int limit) {
    if (size <= 1) return dots;
    return {pen_span(dots.low, size, limit).low, pen_span(dots.high, size, limit).high};
}

/// A sloped line, from left to right. dx and dy count dots, they are not differences.
struct Slope {
    int x1, y1, x2, y2;
    int dx, dy;
    int step;  // of y, 1 or -1
};

/// Calls run(length) for each run of dots that share their place across the line, `shorter` times;
/// the lengths add up to `longer`.
template <typename Run> void for_runs(int longer, int shorter, Run run) {
    // Each dot takes `shorter` from e, and a run ends with the dot at which e runs out. That is
    // after this many dots or one more.
    const int dots = longer / shorter;
    int e = longer;
    for (int i = 0; i < shorter; ++i) {
        const int length = dots + (e > dots * shorter ? 1 : 0);
        run(length);
        e += longer - length * shorter;
    }
}

/// What the pen does to a word that it covers.
Change pen_change() {
    const bool draws = pen_link >= link_set && pen_link <= link_replace_inverse;
    return change_of(link_rules[draws ? pen_link : 0], all_dots, all_dots);
}

/// One dot for each x with a pen one dot high: each run is a row of dots.
void draw_flat_dots(const Slope& line) {
    const Change pen = pen_change();
    int x = line.x1;
    int y = line.y1;
    for_runs(line.dx, line.dy, [&](int length) {
        for_windows(x, x + length - 1, [&](const Window& window) {
            const std::uint64_t dots = in_memory_order(window.mask);
            const Change change{pen.keep | ~dots, pen.flip & dots};
            std::uint8_t* at = work_plane + plane_index(8 * window.byte, y);
            change_bytes(flash_plane_of(at), change);
            change_bytes(at, change);
        });
        x += length;
        y += line.step;
    });
}

/// One dot for each y with a pen one dot wide: its short runs are cheaper dot by dot, without a
/// branch to guess.
void draw_steep_dots(const Slope& line) {
    const Change pen = pen_change();
    std::uint8_t* plane = work_plane;
    int e = line.dy;
    int x = line.x1;
    int y = line.y1;
    for (int i = 0; i < line.dy; ++i) {
        const auto keep = static_cast<std::uint8_t>(pen.keep | ~std::uint64_t{dot_mask(x)});
        const auto flip = static_cast<std::uint8_t>(pen.flip & dot_mask(x));
        std::uint8_t* at = plane + plane_index(x, y);
        std::uint8_t* flash = flash_plane_of(at);
        *at = static_cast<std::uint8_t>((*at & keep) ^ flip);
        *flash = static_cast<std::uint8_t>((*flash & keep) ^ flip);
        y += line.step;
        e -= line.dx;
        const int passed = e <= 0 ? 1 : 0;
        e += passed * line.dy;
        x += passed;
    }
}

// With a larger pen each run is one box: the boxes of its dots lie side by side, none on another,
// so in every link mode the result is the same.

/// One dot for each x, drawn with the pen's height alone.
void draw_flat(const Slope& line) {
    int x = line.x1;
    int y = line.y1;
    for_runs(line.dx, line.dy, [&](int length) {
        fill_box({x, x + length - 1}, pen_span(y, pen_height, last_y));
        x += length;
        y += line.step;
    });
}

/// One dot for each y, drawn with the pen's width alone.
void draw_steep(const Slope& line) {
    int x = line.x1;
    int y = line.y1;
    for_runs(line.dy, line.dx, [&](int length) {
        const int end = y + line.step * (length - 1);
        fill_box(pen_span(x, pen_width, last_x), {std::min(y, end), std::max(y, end)});
        x += 1;
        y = end + line.step;
    });
}

}  // namespace

void draw_point(int x, int y) {
    both_planes = true;
    fill_box(pen_span(x, pen_width, last_x), pen_span(y, pen_height, last_y));
}

void draw_line() {
    if (draw_area.y1 == draw_area.y2) return draw_horizontal();
    if (draw_area.x1 == draw_area.x2) return draw_vertical();

    Slope line{draw_area.x1, draw_area.y1, draw_area.x2, draw_area.y2, 0, 0, 0};
    if (line.x2 < line.x1) {
        std::swap(line.x1, line.x2);
        std::swap(line.y1, line.y2);
    }
    line.dx = line.x2 - line.x1 + 1;
    line.dy = std::abs(line.y2 - line.y1) + 1;
    line.step = line.y1 < line.y2 ? 1 : -1;
    both_planes = true;
    const Span x{line.x1, line.x2};
    const Span y{std::min(line.y1, line.y2), std::max(line.y1, line.y2)};
    if (line.dy < line.dx) {
        dirty_area = area_of(x, extent(y, pen_height, last_y));
        pen_height == 1 ? draw_flat_dots(line) : draw_flat(line);
        draw_area = area_of({line.x2, line.x2}, pen_span(line.y2, pen_height, last_y));
    } else {
        dirty_area = area_of(extent(x, pen_width, last_x), y);
        pen_width == 1 ? draw_steep_dots(line) : draw_steep(line);
        draw_area = area_of(pen_span(line.x2, pen_width, last_x), {line.y2, line.y2});
    }
}

void draw_rect() {
    const Span left = pen_span(draw_area.x1, pen_width, last_x);
    const Span right = pen_span(draw_area.x2, pen_width, last_x);
    const Span top = pen_span(draw_area.y1, pen_height, last_y);
    const Span bottom = pen_span(draw_area.y2, pen_height, last_y);
    const Span inner{std::min(top.high + 1, last_y), std::max(bottom.low - 1, 0)};
    const auto draw_bar = [](Span x, Span y) {
        fill_box(x, y);
        refresh_area();
    };

    both_planes = true;
    draw_bar({left.low, right.high}, top);
    draw_bar({left.low, right.high}, bottom);
    if (inner.low > inner.high) return;
    draw_bar(left, inner);
    draw_bar(right, inner);
}

void line_command() {
    last_point_x = draw_area.x2;
    last_point_y = draw_area.y2;
    draw_line();
    refresh_dirty();
}

void line_on_command() {
    draw_area.x1 = last_point_x;
    draw_area.y1 = last_point_y;
    line_command();
}

void point_command() {
    draw_point(draw_area.x1, draw_area.y1);
    refresh_area();
}

void rect_command() { draw_rect(); }

void set_pen_link() { pen_link = masked(params[0], 7); }

namespace {

/// 1..16 stay, 17 gives 1, 0 gives 16: a wrap, not a clamp.
constexpr std::uint8_t pen_size_from(std::uint8_t v) { return low8(((v - 1) & 15) + 1); }
static_assert(pen_size_from(0) == 16 && pen_size_from(16) == 16 && pen_size_from(17) == 1);

std::uint8_t pen_size(std::uint8_t v) {
    const std::uint8_t size = pen_size_from(v);
    if (v != size) remark(Remark::wrapped, v, size);
    return size;
}

}  // namespace

void set_pen_size() {
    pen_width = pen_size(params[0]);
    pen_height = pen_size(params[1]);
}

}  // namespace orvanel
