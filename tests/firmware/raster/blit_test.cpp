#include "firmware/raster/area_fill.h"
#include "firmware/raster/blit.h"
#include "firmware/raster/refresh.h"
#include "firmware/raster/screen_store.h"
#include "tests/firmware/raster/raster_plain.h"
#include "tests/support/fake_platform.h"
#include "tests/support/raster_support.h"

#include <gtest/gtest.h>

#include <vector>

namespace orvanel {
namespace {

std::vector<std::uint8_t> random_rows(std::mt19937& random, int width, int height) {
    std::vector<std::uint8_t> rows(static_cast<std::size_t>(stride_of(width) * height));
    for (std::uint8_t& byte : rows)
        byte = static_cast<std::uint8_t>(random());
    return rows;
}

/// What the flash plane gets of a picture under `link`, 0 for nothing.
int plain_flash_link(int link, int attr) {
    if (link >= 6 || (attr != 1 && attr != 2)) return link;
    if (attr == 1) return link == 4 ? 6 : link == 5 ? 7 : 0;
    constexpr int opposite[]{0, 2, 1, 0, 5, 4};
    return opposite[link];
}

TEST(Blit, agrees_with_the_rule_for_each_dot) {
    fresh_raster();
    std::mt19937 random{3};
    for (int round = 0; round < 1500; ++round) {
        if (round % 20 == 0) scribble(random);
        const int w = pick(random, 1, pick(random, 0, 1) == 0 ? 20 : 255);
        const int h = pick(random, 1, pick(random, 0, 1) == 0 ? 12 : 128);
        const std::vector<std::uint8_t> rows = random_rows(random, w, h);
        picture_width = w;
        picture_height = static_cast<std::uint8_t>(h);
        blit_zoom_x = static_cast<std::uint8_t>(pick(random, 1, 4));
        blit_zoom_y = static_cast<std::uint8_t>(pick(random, 1, 5));
        blit_link = static_cast<std::uint8_t>(pick(random, 0, 7));
        flash_attr = static_cast<std::uint8_t>(pick(random, 0, 3));
        both_planes = pick(random, 0, 3) != 0;
        const int x1 = pick(random, 0, 239), y1 = pick(random, 0, 127);

        PlaneSet expected = graphics_planes;
        for (int y = 0; y < h * blit_zoom_y; ++y) {
            for (int x = 0; x < w * blit_zoom_x; ++x) {
                const bool dot = packed_dot(rows.data(), w, x / blit_zoom_x, y / blit_zoom_y);
                link_dot(expected.data(), x1 + x, y1 + y, blit_link, dot);
                if (both_planes)
                    link_dot(expected.data() + plane_bytes, x1 + x, y1 + y,
                             plain_flash_link(blit_link, flash_attr), dot);
            }
        }
        draw_area = {x1, static_cast<std::uint8_t>(y1), 0, 0};
        prepare_blit();
        blit(rows);
        ASSERT_EQ(graphics_planes, expected)
            << w << " x " << h << " at " << x1 << ' ' << y1 << " zoom " << int{blit_zoom_x} << ' '
            << int{blit_zoom_y} << " link " << int{blit_link} << " flash " << int{flash_attr};
        ASSERT_EQ(
            draw_area,
            (DrawArea{x1, static_cast<std::uint8_t>(y1), std::min(x1 + w * blit_zoom_x - 1, 239),
                      static_cast<std::uint8_t>(std::min(y1 + h * blit_zoom_y - 1, 127))}));
    }
}

TEST(Blit, flashes_inverse_with_its_box) {
    fresh_raster();
    const std::uint8_t arrow[]{0b00100000, 0b01110000, 0b11111000};
    picture_width = 5;
    picture_height = 3;
    blit_zoom_x = blit_zoom_y = 1;
    blit_link = link_replace;
    flash_attr = flash_inverse;
    draw_area = {6, 1, 0, 0};
    prepare_blit();
    blit(arrow);
    EXPECT_EQ(dots(main_plane(), {4, 1, 12, 3}), R"(
....#....
...###...
..#####..
)");
    EXPECT_EQ(dots(flash_plane_of(main_plane()), {4, 1, 12, 3}), R"(
..##.##..
..#...#..
.........
)");
}

TEST(Blit, an_empty_picture_refreshes_nothing_even_in_the_corner) {
    for (const auto& [w, h] : {std::pair{0, 5}, std::pair{5, 0}}) {
        fresh_raster();
        picture_width = w;
        picture_height = static_cast<std::uint8_t>(h);
        blit_zoom_x = blit_zoom_y = 1;
        blit_link = link_all_set;
        draw_area = {0, 0, 0, 0};
        prepare_blit();
        blit(staging_buffer);
        refresh_area();
        EXPECT_EQ(graphics_planes, PlaneSet{});
        EXPECT_TRUE(fake_platform.painted.empty()) << w << " x " << h;
    }
}

TEST(StagePicture, turns_each_dot_to_its_place) {
    fresh_raster();
    std::mt19937 random{4};
    for (int round = 0; round < 400; ++round) {
        const int w = pick(random, 1, round % 2 == 0 ? 20 : 255);
        const int h = pick(random, 1, round % 3 == 0 ? 20 : 255);
        const int rotation = round % 4;
        const std::vector<std::uint8_t> rows = random_rows(random, w, h);
        picture_width = w;
        picture_height = static_cast<std::uint8_t>(h);
        stage_picture(rows, static_cast<std::uint8_t>(rotation));

        const bool aside = rotation % 2 == 1;
        ASSERT_EQ(picture_width, aside ? h : w);
        ASSERT_EQ(picture_height, aside ? std::min(w, 128) : h);
        for (int r = 0; r < h; ++r) {
            for (int c = 0; c < w; ++c) {
                const int x[]{c, r, w - 1 - c, h - 1 - r};
                const int y[]{r, w - 1 - c, h - 1 - r, c};
                if (y[rotation] >= picture_height) continue;
                ASSERT_EQ(
                    packed_dot(staging_buffer.data(), picture_width, x[rotation], y[rotation]),
                    packed_dot(rows.data(), w, c, r))
                    << w << " x " << h << " rotation " << rotation << ", dot " << c << ' ' << r;
            }
        }
    }
}

TEST(PackArea, aligns_rows_to_the_left_edge_and_keeps_what_lies_behind) {
    fresh_raster();
    std::mt19937 random{5};
    for (int round = 0; round < 300; ++round) {
        scribble(random);
        const int x1 = pick(random, 0, 239), x2 = pick(random, x1, 239);
        const int y1 = pick(random, 0, 127), y2 = pick(random, y1, 127);
        const int stride = (x2 - x1) / 8 + 1, bytes = stride * (y2 - y1 + 1);
        std::vector<std::uint8_t> expected(static_cast<std::size_t>(bytes + 9), 0xA5);
        std::vector<std::uint8_t> packed = expected;
        std::fill_n(expected.begin(), bytes, std::uint8_t{0});
        for (int y = y1; y <= y2; ++y)
            for (int x = x1; x <= x2; ++x)
                if (plane_get(main_plane(), x, y))
                    expected[static_cast<std::size_t>(stride * (y - y1) + (x - x1) / 8)] |=
                        dot_mask(x - x1);
        draw_area = {x1, static_cast<std::uint8_t>(y1), x2, static_cast<std::uint8_t>(y2)};
        pack_area(packed);
        ASSERT_EQ(packed, expected) << x1 << ' ' << y1 << ' ' << x2 << ' ' << y2;
    }
}

TEST(ScreenStore, pastes_both_planes_and_cuts_at_the_corner) {
    std::mt19937 random{6};
    fresh_raster();
    scribble(random);
    const PlaneSet stored = graphics_planes;
    draw_area = {3, 7, 60, 40};
    store_area(clipboard_slot);
    EXPECT_EQ(graphics_planes, stored);
    EXPECT_TRUE(fake_platform.painted.empty());

    graphics_planes = {};
    PlaneSet expected{};
    for (int y = 100; y < 128; ++y)
        for (int x = 200; x < 240; ++x)
            for (int plane : {0, plane_bytes})
                plane_put(expected.data() + plane, x, y,
                          plane_get(stored.data() + plane, x - 197, y - 93));
    draw_area = {200, 100, 0, 0};
    restore_area(clipboard_slot);
    EXPECT_EQ(graphics_planes, expected);
    EXPECT_EQ(fake_platform.painted, (std::vector<PaintedRect>{{200, 100, 239, 127}}));
}

TEST(ScreenStore, an_empty_slot_draws_and_refreshes_nothing) {
    fresh_raster();
    restore_area(menu_slot);
    EXPECT_TRUE(fake_platform.painted.empty());
}

TEST(ScreenStore, view_of_the_clipboard_shows_the_bytes_as_they_lie) {
    fresh_raster();
    both_planes = true;
    fill_area(link_replace, pattern_solid);
    store_area(clipboard_slot);
    show_clipboard();
    fill_area(link_replace, pattern_clear);
    draw_area = {3, 5, 12, 6};
    store_area(clipboard_slot);  // 2 rows of 2 bytes, all clear, in front of the old bytes
    EXPECT_FALSE(image_dot(lcd_image, 31, 0));
    EXPECT_TRUE(image_dot(lcd_image, 32, 0));
    EXPECT_TRUE(image_dot(lcd_image_flash, 0, 1));
}

TEST(MoveArea, copies_every_row_from_its_old_place) {
    fresh_raster();
    std::mt19937 random{7};
    for (int round = 0; round < 300; ++round) {
        scribble(random);
        select_terminal_plane();
        const bool whole_rows = round % 3 == 0;
        const int x1 = whole_rows ? 0 : pick(random, 0, 239);
        const int x2 = whole_rows ? 239 : pick(random, x1, 239);
        const int y1 = pick(random, 0, 127), y2 = pick(random, y1, 127);
        const int to_x = round % 6 == 0 ? 0 : pick(random, 0, 239), to_y = pick(random, 0, 127);

        BitPlane expected = terminal_plane;
        for (int y = y1; y <= y2; ++y)
            for (int x = x1; x <= x2; ++x)
                link_dot(expected.data(), to_x + x - x1, to_y + y - y1, link_replace,
                         plane_get(terminal_plane.data(), x, y));
        draw_area = {x1, static_cast<std::uint8_t>(y1), x2, static_cast<std::uint8_t>(y2)};
        move_area(to_x, to_y);
        ASSERT_EQ(terminal_plane, expected) << "round " << round;
        ASSERT_EQ(draw_area.x1, to_x);
        ASSERT_EQ(draw_area.y1, to_y);
    }
}

}  // namespace
}  // namespace orvanel
