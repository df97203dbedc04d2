#include "firmware/core/read/read.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/line.h"
#include "firmware/raster/refresh.h"
#include "tests/firmware/raster/raster_plain.h"
#include "tests/support/fake_platform.h"
#include "tests/support/raster_support.h"

#include <gtest/gtest.h>

namespace orvanel {
namespace {

bool pattern_dot(int pattern, int x, int y) {
    return (pattern_table[static_cast<std::size_t>(pattern & 15)]
                         [static_cast<std::size_t>(y % 8)] >>
                (7 - x % 8) &
            1) != 0;
}

TEST(FillArea, agrees_with_the_rule_for_each_dot) {
    fresh_raster();
    std::mt19937 random{1};
    for (int round = 0; round < 600; ++round) {
        scribble(random);
        both_planes = pick(random, 0, 1) == 1;
        const int mode = pick(random, 0, 8);
        const int pattern = pick(random, 0, 255);
        // Every fourth area has the full width, every sixteenth or so is empty.
        draw_area = {pick(random, 0, 239), static_cast<std::uint8_t>(pick(random, 0, 127)), 0, 0};
        draw_area.x2 = pick(random, draw_area.x1 - 3, 239);
        draw_area.y2 = static_cast<std::uint8_t>(pick(random, std::max(draw_area.y1 - 3, 0), 127));
        if (round % 4 == 0) draw_area = {0, draw_area.y1, 239, draw_area.y2};

        PlaneSet expected = graphics_planes;
        for (int y = draw_area.y1; y <= draw_area.y2; ++y)
            for (int x = draw_area.x1; x <= draw_area.x2; ++x)
                for (int plane = 0; plane <= (both_planes ? 1 : 0); ++plane)
                    link_dot(expected.data() + plane * plane_bytes, x, y, mode <= 5 ? mode : 0,
                             pattern_dot(pattern, x, y));
        fill_area(static_cast<std::uint8_t>(mode), static_cast<std::uint8_t>(pattern));
        ASSERT_EQ(graphics_planes, expected) << "round " << round;
    }
}

TEST(FillArea, pattern_is_anchored_to_the_display) {
    fresh_raster();
    draw_area = {5, 1, 17, 4};
    fill_area(link_replace, 8);
    EXPECT_EQ(dots(main_plane(), {4, 0, 19, 5}), R"(
................
...#...#...#....
..#...#...#.....
.#...#...#...#..
....#...#...#...
................
)");
}

TEST(DrawBox, has_no_inside_at_the_upper_edge) {
    fresh_raster();
    draw_area = {2, 0, 9, 0};
    draw_box(pattern_solid);
    EXPECT_EQ(dots(main_plane(), {0, 0, 11, 1}), R"(
..########..
............
)");
    draw_area = {2, 3, 9, 6};
    draw_box(4);
    EXPECT_EQ(dots(main_plane(), {0, 2, 11, 7}), R"(
............
..########..
..#.#.#.##..
..##.#.#.#..
..########..
............
)");
    EXPECT_EQ(dirty_area, (DrawArea{2, 3, 9, 6}));
}

TEST(AreaCommands, pattern_0_neither_draws_nor_refreshes) {
    fresh_raster();
    draw_area = {0, 0, 9, 9};
    set_area_command();
    const PlaneSet before = graphics_planes;
    params[0] = 0;
    pattern_area_command();
    EXPECT_EQ(graphics_planes, before);
    EXPECT_EQ(fake_platform.painted, (std::vector<PaintedRect>{{0, 0, 9, 9}}));
}

/// A pen's box around a point: `w` x `h` dots, the larger half to the right and bottom.
void plain_point(PlaneSet& planes, int x, int y, int w, int h) {
    if (w == 0 || h == 0 || pen_link > 5) return;
    for (int row = 0; row < h; ++row)
        for (int column = 0; column < w; ++column)
            for (int plane : {plane_bytes, 0})
                link_dot(planes.data() + plane, x - (w - 1) / 2 + column, y - (h - 1) / 2 + row,
                         pen_link, true);
}

void plain_line(PlaneSet& planes, int x1, int y1, int x2, int y2) {
    if (y1 == y2) {
        for (int x = std::min(x1, x2); x <= std::max(x1, x2); ++x)
            plain_point(planes, x, y1, 1, std::max<int>(pen_height, 1));
        return;
    }
    if (x1 == x2) {
        for (int y = std::min(y1, y2); y <= std::max(y1, y2); ++y)
            plain_point(planes, x1, y, std::max<int>(pen_width, 1), 1);
        return;
    }
    if (x2 < x1) return plain_line(planes, x2, y2, x1, y1);
    const int dx = x2 - x1 + 1, dy = std::abs(y2 - y1) + 1, step = y1 < y2 ? 1 : -1;
    int e = std::max(dx, dy);
    for (int x = x1, y = y1;;) {
        plain_point(planes, x, y, dy < dx ? 1 : pen_width, dy < dx ? pen_height : 1);
        if (dy < dx ? x == x2 : y == y2) return;
        (dy < dx ? x : y) += dy < dx ? 1 : step;
        e -= std::min(dx, dy);
        if (e > 0) continue;
        e += std::max(dx, dy);
        (dy < dx ? y : x) += dy < dx ? step : 1;
    }
}

TEST(DrawLine, agrees_with_the_rule_for_each_dot_and_knows_its_extent) {
    fresh_raster();
    std::mt19937 random{2};
    for (int round = 0; round < 3000; ++round) {
        if (round % 50 == 0) scribble(random);
        pen_link = static_cast<std::uint8_t>(pick(random, 0, 7));
        // A pen of 0 is what the touch panel may lend.
        pen_width = static_cast<std::uint8_t>(pick(random, 0, 3) != 0 ? 1 : pick(random, 0, 16));
        pen_height = static_cast<std::uint8_t>(pick(random, 0, 3) != 0 ? 1 : pick(random, 0, 16));
        const int x1 = pick(random, 0, 239), y1 = pick(random, 0, 127);
        const int x2 = round % 5 == 0 ? x1 : pick(random, 0, 239);
        const int y2 = round % 7 == 0 ? y1 : pick(random, 0, 127);

        PlaneSet before = graphics_planes;
        PlaneSet expected = graphics_planes;
        plain_line(expected, x1, y1, x2, y2);
        both_planes = true;
        draw_area = {x1, static_cast<std::uint8_t>(y1), x2, static_cast<std::uint8_t>(y2)};
        draw_line();
        ASSERT_EQ(graphics_planes, expected)
            << x1 << ' ' << y1 << ' ' << x2 << ' ' << y2 << " pen " << int{pen_width} << ' '
            << int{pen_height} << " link " << int{pen_link};
        // What the line changed lies in the area that is going to be refreshed.
        for (int y = dirty_area.y1; y <= dirty_area.y2; ++y)
            for (int x = dirty_area.x1; x <= dirty_area.x2; ++x)
                plane_put(before.data(), x, y, plane_get(main_plane(), x, y));
        ASSERT_TRUE(std::equal(before.begin(), before.begin() + plane_bytes, main_plane()));
    }
}

TEST(DrawLine, first_step_is_not_centred) {
    fresh_raster();
    draw_area = {0, 0, 9, 2};
    draw_line();
    EXPECT_EQ(dots(main_plane(), {0, 0, 11, 3}), R"(
####........
....###.....
.......###..
............
)");
    EXPECT_EQ(draw_area, (DrawArea{9, 2, 9, 2}));
}

TEST(Pen, is_cut_and_not_shifted_at_the_edges) {
    fresh_raster();
    pen_width = pen_height = 4;
    draw_point(0, 0);
    EXPECT_EQ(draw_area, (DrawArea{0, 0, 2, 2}));
    draw_point(239, 127);
    EXPECT_EQ(draw_area, (DrawArea{238, 126, 239, 127}));
    draw_area = {5, 9, 5, 9};
    draw_line();  // a point as a line has the pen's height alone
    EXPECT_EQ(draw_area, (DrawArea{5, 8, 5, 11}));
}

TEST(DrawRect, inverts_each_dot_once_but_for_a_single_point) {
    fresh_raster();
    pen_link = link_invert;
    draw_area = {1, 0, 6, 3};
    draw_rect();
    EXPECT_EQ(dots(main_plane(), {0, 0, 7, 4}), R"(
.######.
.#....#.
.#....#.
.######.
........
)");
    EXPECT_EQ(fake_platform.painted,
              (std::vector<PaintedRect>{{1, 0, 6, 0}, {1, 3, 6, 3}, {1, 1, 1, 2}, {6, 1, 6, 2}}));
    draw_area = {9, 9, 9, 9};
    draw_rect();
    EXPECT_FALSE(plane_get(main_plane(), 9, 9));
}

TEST(LineCommands, go_on_from_the_second_point_as_it_was_sent) {
    fresh_raster();
    draw_area = {9, 2, 3, 0};  // drawn from left to right, so the end points change places
    line_command();
    draw_area = {0, 0, 3, 4};  // only the second point has been read
    line_on_command();
    EXPECT_EQ(dots(main_plane(), {2, 0, 10, 5}), R"(
.###.....
.#..##...
.#....##.
.#.......
.#.......
.........
)");
}

}  // namespace
}  // namespace orvanel
