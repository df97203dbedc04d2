#include "firmware/raster/line.h"

#include "firmware/core/bytes.h"
#include "firmware/core/read.h"
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

/// The extent of a sloped line across its run, where `low` and `high` are its end points there.
Span extent(int low, int high, int size, int limit) {
    if (size <= 1) return {low, high};
    return {pen_span(low, size, limit).low, pen_span(high, size, limit).high};
}

/// A sloped line, from left to right. dx and dy count dots, they are not differences.
struct Slope {
    int x1, y1, x2, y2;
    int dx, dy;
    int step;  // of y, 1 or -1
};

/// One dot for each x.
template <typename Dot> void walk_flat(const Slope& line, Dot dot) {
    int e = line.dx;
    int y = line.y1;
    for (int x = line.x1; x <= line.x2; ++x) {
        dot(x, y);
        e -= line.dy;
        if (e > 0) continue;
        e += line.dx;
        y += line.step;
    }
}

/// One dot for each y.
template <typename Dot> void walk_steep(const Slope& line, Dot dot) {
    int e = line.dy;
    int x = line.x1;
    for (int y = line.y1;; y += line.step) {
        dot(x, y);
        if (y == line.y2) return;
        e -= line.dx;
        if (e > 0) continue;
        e += line.dy;
        x += 1;
    }
}

/// The dots x1..x2 of a row, on both planes.
void change_span(int x1, int x2, int y, const LinkRule& rule) {
    while (x1 <= x2) {
        const Window window = first_window(x1, x2);
        const Change change = change_of(rule, window.mask, window.mask);
        std::uint8_t* at = work_plane + plane_index(8 * window.byte, y);
        change_bytes(flash_plane_of(at), change);
        change_bytes(at, change);
        x1 = end_of(window);
    }
}

/// Draws with a pen of one dot, run by run: the dots that share a y are a span of words.
void draw_thin_flat(const Slope& line) {
    const LinkRule& rule = link_rules[pen_link];
    const int shorter = line.dx / line.dy;
    int e = line.dx;
    int x = line.x1;
    int y = line.y1;
    for (int i = 0; i < line.dy; ++i) {
        // A run ends with the dot at which e runs out, so it has one of two lengths.
        const int length = shorter + (e > shorter * line.dy ? 1 : 0);
        change_span(x, x + length - 1, y, rule);
        e += line.dx - length * line.dy;
        x += length;
        y += line.step;
    }
}

/// The same for a line of one dot in each y.
void draw_thin_steep(const Slope& line) {
    const LinkRule& rule = link_rules[pen_link];
    const auto drop = static_cast<std::uint8_t>(rule.drop_picture | rule.drop_box);
    const auto flip = static_cast<std::uint8_t>(rule.flip_picture ^ rule.flip_box);
    std::uint8_t* plane = work_plane;
    walk_steep(line, [=](int x, int y) {
        const std::uint8_t keep_mask = ~(dot_mask(x) & drop) & 0xFF;
        const std::uint8_t flip_mask = dot_mask(x) & flip;
        std::uint8_t* at = plane + plane_index(x, y);
        std::uint8_t* flash = flash_plane_of(at);
        *flash = static_cast<std::uint8_t>((*flash & keep_mask) ^ flip_mask);
        *at = static_cast<std::uint8_t>((*at & keep_mask) ^ flip_mask);
    });
}

/// Draws with a pen of one dot, which needs no box around each dot.
void draw_thin(const Slope& line) {
    both_planes = true;
    draw_area = area_of({line.x2, line.x2}, {line.y2, line.y2});
    if (pen_link < link_set || pen_link > link_replace_inverse) return;
    if (line.dy < line.dx)
        draw_thin_flat(line);
    else
        draw_thin_steep(line);
}

void draw_flat(const Slope& line) {
    const Span y =
        extent(std::min(line.y1, line.y2), std::max(line.y1, line.y2), pen_height, last_y);
    dirty_area = area_of({line.x1, line.x2}, y);
    if (pen_height == 1) return draw_thin(line);
    const std::uint8_t width = std::exchange(pen_width, std::uint8_t{1});
    walk_flat(line, draw_point);
    pen_width = width;
}

void draw_steep(const Slope& line) {
    const Span y{std::min(line.y1, line.y2), std::max(line.y1, line.y2)};
    dirty_area = area_of(extent(line.x1, line.x2, pen_width, last_x), y);
    if (pen_width == 1) return draw_thin(line);
    const std::uint8_t height = std::exchange(pen_height, std::uint8_t{1});
    walk_steep(line, draw_point);
    pen_height = height;
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
    if (line.dy < line.dx)
        draw_flat(line);
    else
        draw_steep(line);
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

void set_pen_link() { pen_link = params[0] & 7; }

namespace {

/// 1..16 stay, 17 gives 1, 0 gives 16: a wrap, not a clamp.
constexpr std::uint8_t pen_size_from(std::uint8_t v) { return low8(((v - 1) & 15) + 1); }
static_assert(pen_size_from(0) == 16 && pen_size_from(16) == 16 && pen_size_from(17) == 1);

}  // namespace

void set_pen_size() {
    pen_width = pen_size_from(params[0]);
    pen_height = pen_size_from(params[1]);
}

}  // namespace orvanel
