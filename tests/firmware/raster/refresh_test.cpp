#include "firmware/core/read/read.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/refresh.h"
#include "firmware/raster/screen_store.h"
#include "tests/firmware/raster/raster_plain.h"
#include "tests/support/fake_platform.h"
#include "tests/support/raster_support.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>

namespace orvanel {
namespace {

/// What the glass shows in each phase, one entry a dot.
using Glass = std::array<std::array<std::array<bool, 240>, 128>, 2>;

bool rotated_dot(const RotatedImage& image, int x, int y) {
    const int column = 127 - y;
    return (image[static_cast<std::size_t>(239 - x)][static_cast<std::size_t>(column / 64)]
                    .load() >>
                (63 - column % 64) &
            1) != 0;
}

void expect_images(const Glass& glass, int round) {
    for (int y = 0; y < 128; ++y) {
        for (int x = 0; x < 240; ++x) {
            const auto row = static_cast<std::size_t>(y), column = static_cast<std::size_t>(x);
            const bool main = glass[0][row][column], flash = glass[1][row][column];
            const bool same = image_dot(lcd_image, x, y) == main &&
                              image_dot(lcd_image_flash, x, y) == flash &&
                              rotated_dot(lcd_image_rot, x, y) == main &&
                              rotated_dot(lcd_image_rot_flash, x, y) == flash;
            ASSERT_TRUE(same) << "round " << round << ", dot " << x << ' ' << y;
        }
    }
    for (const auto& row : lcd_image)
        ASSERT_EQ(row[3].load() & 0xFFFF, 0u);
}

TEST(RefreshRect, composes_whole_bytes_of_its_rows_into_all_four_images) {
    fresh_raster();
    std::mt19937 random{8};
    Glass glass{};
    for (int round = 0; round < 400; ++round) {
        scribble(random);
        graphic_on = pick(random, 0, 3) != 0;
        terminal_on = pick(random, 0, 3) == 0;
        clipboard_view = pick(random, 0, 3) == 0;
        const int x1 = pick(random, 0, 239),
                  x2 = pick(random, x1, round % 2 == 0 ? 239 : std::min(x1 + 9, 239));
        const int y1 = pick(random, 0, 127),
                  y2 = pick(random, y1, round % 3 == 0 ? 127 : std::min(y1 + 9, 127));

        const std::uint8_t* source =
            clipboard_view ? store_slots[clipboard_slot].buffer.data() : main_plane();
        for (int y = y1; y <= y2; ++y)
            for (int x = x1 / 8 * 8; x <= x2 / 8 * 8 + 7; ++x)
                for (int phase = 0; phase < 2; ++phase)
                    glass[static_cast<std::size_t>(phase)][static_cast<std::size_t>(y)]
                         [static_cast<std::size_t>(x)] =
                             (graphic_on && plane_get(source + phase * plane_bytes, x, y)) ||
                             (terminal_on && plane_get(terminal_plane.data(), x, y));
        fake_platform.painted.clear();
        refresh_rect(x1, y1, x2, y2);
        ASSERT_NO_FATAL_FAILURE(expect_images(glass, round));
        ASSERT_EQ(fake_platform.painted, (std::vector<PaintedRect>{{x1, y1, x2, y2}}));
    }
}

TEST(Display, drawing_goes_on_while_it_is_off) {
    fresh_raster();
    plane_put(terminal_plane.data(), 7, 7, true);
    set_display();
    display_off();
    clear_display();
    EXPECT_TRUE(image_dot(lcd_image, 7, 7));
    EXPECT_FALSE(image_dot(lcd_image, 8, 7));
    invert_display();
    EXPECT_FALSE(image_dot(lcd_image_flash, 8, 7));
    display_on();
    EXPECT_TRUE(image_dot(lcd_image_flash, 8, 7));
}

TEST(Display, shows_the_clipboard_in_place_of_the_planes_until_they_are_asked_for) {
    fresh_raster();
    plane_put(main_plane(), 3, 3, true);
    plane_put(store_slots[clipboard_slot].buffer.data(), 5, 3, true);
    const auto shown = [] {
        return std::pair{image_dot(lcd_image, 3, 3), image_dot(lcd_image, 5, 3)};
    };
    show_clipboard();
    EXPECT_EQ(shown(), (std::pair{false, true}));
    show_planes();
    EXPECT_EQ(shown(), (std::pair{true, false}));
}

TEST(Flash, areas_flash_inverted_patterned_or_not_at_all) {
    fresh_raster();
    draw_area = {2, 0, 5, 1};
    fill_area(link_replace, pattern_solid);
    const auto flash = [] { return dots(flash_plane_of(main_plane()), {0, 0, 9, 1}); };

    draw_area = {4, 0, 7, 0};
    flash_inverted();
    EXPECT_EQ(flash(), "\n..##..##..\n..####....\n");
    params[0] = 4;
    flash_pattern();
    EXPECT_EQ(flash(), "\n..###.#...\n..####....\n");
    select_graphics_planes();
    flash_same();
    EXPECT_EQ(flash(), "\n..####....\n..####....\n");
    EXPECT_EQ(dots(main_plane(), {0, 0, 9, 1}), flash());
}

TEST(Flash, period_0_goes_back_to_phase_0_at_once) {
    fresh_raster();
    params[0] = 0x30;  // 0 in the four bits that count
    set_flash_period();
    EXPECT_TRUE(fake_platform.painted.empty());
    flash_phase = 1;
    set_flash_period();
    EXPECT_EQ(flash_phase, 0);
    EXPECT_EQ(fake_platform.painted, (std::vector<PaintedRect>{{0, 0, 239, 127}}));
    display_on();
    EXPECT_EQ(flash_timer, 0);
    flash_period = 3;
    display_on();
    EXPECT_EQ(flash_timer, 3) << "the display's return begins a period";
}

}  // namespace
}  // namespace orvanel
