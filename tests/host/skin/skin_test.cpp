// The picture around the glass: what is found in it, how it is coloured, composed and cut out.

#include "firmware/core/ground/backlight.h"
#include "firmware/raster/refresh.h"
#include "host/program/settings.h"
#include "host/skin/lcd_colours.h"
#include "host/skin/outline.h"
#include "host/skin/painting.h"
#include "host/skin/skin.h"
#include "host/skin/view.h"
#include "host/window/ground/input.h"
#include "host/window/ground/menu.h"
#include "host/window/roof/menu_command.h"
#include "tests/support/fake_window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace orvanel {

namespace {

using Frame = std::vector<std::uint32_t>;

void show(int zoom, bool rotated) {
    view_zoom = zoom;
    view_rotated = rotated ? 1 : 0;
    choose_view();
}

Frame composed(PixelRect part) {
    Frame frame(static_cast<std::size_t>(window_width() * window_height()));
    compose_window(frame, part);
    return frame;
}

Frame composed() { return composed({-5, -5, 9999, 9999}); }

std::uint32_t pixel_of(const Frame& frame, int x, int y) {
    return frame[static_cast<std::size_t>(y * window_width() + x)];
}

/// Random dots in all four images; the 16 bits after a row of an upright one stay 0.
void fill_images(unsigned seed) {
    std::mt19937_64 random{seed};
    for (UprightImage* image : {&lcd_image, &lcd_image_flash})
        for (auto& row : *image)
            for (std::size_t i = 0; i < row.size(); ++i)
                row[i] = i == 3 ? random() & ~std::uint64_t{0xFFFF} : random();
    for (RotatedImage* image : {&lcd_image_rot, &lcd_image_rot_flash})
        for (auto& row : *image)
            for (auto& word : row)
                word = random();
}

bool is_set(const Display& display, int x, int y) {
    return (dot_row(display, y)[static_cast<std::size_t>(x / 64)].load() >> (63 - x % 64) & 1) != 0;
}

/// The first pixel of the display that isn't as its dot demands, as text; empty if none.
std::string wrong_pixel(const Frame& frame, const Display& display) {
    const int z = dot_pixels();
    const SkinRect& area = display.area;
    for (int y = area.top * z; y < (area.bottom + 1) * z; ++y)
        for (int x = area.left * z; x < (area.right + 1) * z; ++x) {
            const bool set = is_set(display, x / z - area.left, y / z - area.top);
            if (pixel_of(frame, x, y) != (0xFF000000 | dib_colour(display, set ? 1 : 0)))
                return std::to_string(x) + ", " + std::to_string(y);
        }
    return {};
}

/// A BMP of one colour index for the rim, one for the surround, one for the glass.
std::vector<std::uint8_t> small_skin(int glass_rows, int glass_left = 40, int top = 20,
                                     int right = 40) {
    Dib dib{};
    EXPECT_TRUE(dib_create(dib, glass_left + 240 * std::max(glass_rows / 128, 1) + right,
                           2 * top + glass_rows, 256));
    const int middle = dib_columns(dib) / 2;
    for (int y = 0; y < dib_rows(dib); ++y)
        for (int x = 0; x < dib_columns(dib); ++x)
            dib_put(dib, x, y, x == middle || (x >= glass_left && y >= top) ? 3 : 2);
    for (int y = 0; y < top; ++y)
        dib_put(dib, middle, y, 2);
    for (int y = top + glass_rows; y < dib_rows(dib); ++y)
        dib_put(dib, middle, y, 2);
    dib_put(dib, 0, 0, 7);
    dib_put(dib, 1, 0, 9);
    dib_set_colour(dib, 7, 0x112233);
    dib_set_colour(dib, 9, 0x445566);
    std::vector<std::uint8_t> file(14);
    file[0] = 'B';
    file[1] = 'M';
    file.insert(file.end(), dib.block.begin(), dib.block.end());
    return file;
}

class Skin : public testing::Test {
    void SetUp() override {
        skin_model = 1;
        set_backlight_level(1);
        ASSERT_EQ(prepare_view(), "");
        show(1, false);
    }
};

}  // namespace

TEST_F(Skin, of_the_program_is_found_to_be_as_it_is_told) {
    EXPECT_EQ(builtin_skin().size(), 192632u);
    EXPECT_EQ(key_index, 118);
    EXPECT_EQ(band_index, 96);
    EXPECT_EQ(dib_get(skin_image, 1, 0), 118);
    EXPECT_EQ(key_colour_framed, 0xFFFFFFu);
    EXPECT_EQ(key_colour_cut, dib_colour(skin_image, 65));
    EXPECT_EQ(skin_image.scale, 2u);
    EXPECT_EQ(skin_image.width, 292u);
    EXPECT_EQ(skin_image.height, 164u);
    EXPECT_EQ(lcd_dib.area.left, 37);
    EXPECT_EQ(lcd_dib.area.top, 19);
    EXPECT_EQ(lcd_dib_rot.area.left, 17);
    EXPECT_EQ(lcd_dib_rot.area.top, 37);
}

TEST_F(Skin, that_shows_no_dots_is_refused_and_the_old_one_stays) {
    const auto refused = [](const std::vector<std::uint8_t>& bmp, const char* words) {
        EXPECT_NE(skin_analyse(bmp).find(words), std::string::npos) << words;
        EXPECT_EQ(key_index, 118);
        EXPECT_EQ(skin_image.width, 292u);
    };
    refused(small_skin(127), "127 pixels high");
    refused(small_skin(128, 40, 0), "upper edge");
    refused(small_skin(128, 40, 20, -1), "right edge");
    std::vector<std::uint8_t> cut = builtin_skin();
    cut.resize(cut.size() - 584);
    refused(cut, "within its rows");
    cut.resize(60);
    refused(cut, "within its rows");
    cut.resize(20);
    refused(cut, "no BMP");

    EXPECT_EQ(skin_analyse(small_skin(128, 40, 20, 0)), "");
    EXPECT_EQ(skin_analyse(small_skin(128)), "");
    EXPECT_EQ(skin_image.scale, 1u);
    EXPECT_EQ(lcd_dib.area.top, 20);
    EXPECT_EQ(lcd_dib.area.left, 40);
    EXPECT_EQ(key_colour_framed, 0x112233u);
    EXPECT_EQ(key_colour_cut, 0x445566u);
}

TEST_F(Skin, glows_with_the_backlight) {
    const auto clear_red_at = [](std::uint8_t level) {
        set_backlight_level(level);
        model_apply();
        return dib_colour(lcd_dib_rot_flash, 0) >> 16;
    };
    skin_model = custom_model;
    lcd_type = lcd_polarizer = lcd_backlight = 0;
    EXPECT_EQ(clear_red_at(0), 0x88u);
    EXPECT_EQ(clear_red_at(25), 0xA6u);
    EXPECT_EQ(clear_red_at(50), 0xC5u);
    EXPECT_EQ(clear_red_at(99), (0xC5u + 49 * 0xE6u) / 50);
    EXPECT_EQ(clear_red_at(1), 0xE6u);
    EXPECT_EQ(dib_colour(skin_image_rot, band_index), 0xEBEBEBu);
    skin_model = 0;  // blue, negative
    EXPECT_EQ(clear_red_at(1), 0x00u);
    EXPECT_EQ(dib_colour(lcd_dib, 1), 0xD2D2D2u);
    EXPECT_EQ(lcd_type, 1);
    fake_window.repaints = 0;
    menu_command(item_model + 1);
    EXPECT_EQ(fake_window.repaints, 1);
    menu_command(item_frame);
    EXPECT_EQ(fake_window.repaints, 2);
    menu_command(item_frame);
}

TEST_F(Skin, leaves_no_pixel_unpainted_and_turns_whole) {
    for (const bool rotated : {false, true})
        for (const int zoom : {1, 2, 3}) {
            show(zoom, rotated);
            EXPECT_EQ(std::ranges::count(composed(), 0u), 0) << zoom << rotated;
        }
    const int columns = dib_columns(skin_image), rows = dib_rows(skin_image);
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns; ++x)
            ASSERT_EQ(dib_get(skin_image_rot, rows - 1 - y, x), dib_get(skin_image, x, y));
}

TEST_F(Skin, is_copied_with_the_dots_of_the_glass) {
    fill_images(4);
    for (const bool rotated : {false, true}) {
        show(1, rotated);
        Dib copy{};
        static_cast<Dib&>(copy) = *view_lcd;
        copy.block = dib_block(*view_lcd);
        for (int y = 0; y < dib_rows(copy); ++y)
            for (int x = 0; x < dib_columns(copy); ++x)
                ASSERT_EQ(dib_row(copy, y)[static_cast<std::size_t>(x / 8)] >> (7 - x % 8) & 1,
                          is_set(*view_lcd, x, y) ? 1 : 0)
                    << x << ", " << y << rotated;
    }
}

TEST_F(Skin, is_composed_with_the_dots_of_the_present_phase) {
    fill_images(1);
    for (const bool rotated : {false, true})
        for (const int zoom : {1, 2, 3, 5}) {
            show(zoom, rotated);
            flash_phase = 0;
            EXPECT_EQ(wrong_pixel(composed(), *view_lcd), "") << zoom << rotated;
            flash_phase = 1;
            EXPECT_EQ(wrong_pixel(composed(), *view_lcd_flash), "") << zoom << rotated;
        }
    flash_phase = 0;
}

TEST_F(Skin, shows_each_of_its_pixels_at_zoom_2_and_their_mean_at_zoom_1) {
    show(2, false);
    Frame frame = composed();
    for (const auto& [x, y] : {std::pair{5, 9}, {300, 2}, {583, 327}, {60, 200}})
        EXPECT_EQ(pixel_of(frame, x, y),
                  0xFF000000 | dib_colour(skin_image, dib_get(skin_image, x, y)));
    show(1, false);
    frame = composed();
    for (const auto& [x, y] : {std::pair{3, 9}, {150, 2}, {291, 163}, {291, 80}, {20, 100}}) {
        unsigned green = 2;
        for (int i = 0; i < 4; ++i)
            green +=
                dib_colour(skin_image, dib_get(skin_image, 2 * x + i % 2, 2 * y + i / 2)) >> 8 &
                0xFF;
        EXPECT_EQ(pixel_of(frame, x, y) >> 8 & 0xFF, green / 4) << x << ", " << y;
    }
}

TEST_F(Skin, is_the_same_composed_in_parts_or_as_a_whole) {
    fill_images(2);
    std::mt19937 random{3};
    for (const int zoom : {1, 2, 3}) {
        show(zoom, zoom == 2);
        const Frame whole = composed();
        for (int i = 0; i < 40; ++i) {
            const int x = static_cast<int>(random() % static_cast<unsigned>(window_width()));
            const int y = static_cast<int>(random() % static_cast<unsigned>(window_height()));
            const int right = x + 1 + static_cast<int>(random() % 200);
            const Frame part = composed({x, y, right, y + 40});
            EXPECT_EQ(pixel_of(part, x, y), pixel_of(whole, x, y));
            for (std::size_t k = 0; k < part.size(); ++k)
                if (part[k] != 0) {
                    ASSERT_EQ(part[k], whole[k]);
                }
            if (x >= zoom) {
                ASSERT_EQ(pixel_of(part, x / zoom * zoom - 1, y), 0u);
            }
        }
        EXPECT_EQ(pixel_of(composed({0, 0, 1, 1}), 0, 0), pixel_of(whole, 0, 0));
        EXPECT_EQ(composed({window_width(), 0, 9999, 9}), Frame(whole.size()));
        EXPECT_EQ(composed({0, -9, 9999, 0}), Frame(whole.size()));
    }
}

TEST_F(Skin, is_painted_where_dots_have_changed_and_nowhere_else) {
    for (const bool rotated : {false, true}) {
        show(2, rotated);
        const Frame frame = composed(display_pixels(10, 20, 90, 23));
        for (int y = 0; y < window_height(); ++y)
            for (int x = 0; x < window_width(); ++x) {
                const ModuleDot dot = glass_to_module(x, y);
                const bool changed = dot.x >= 10 && dot.x <= 90 && dot.y >= 20 && dot.y <= 23;
                ASSERT_EQ(pixel_of(frame, x, y) != 0, changed) << x << ", " << y << rotated;
            }
    }
}

TEST_F(Skin, is_cut_out_pixel_by_pixel_after_each_change) {
    show_frame = true;
    for (const int item : {item_frame, item_zoom + 1, item_rotate, item_zoom + 2, item_zoom,
                           item_rotate, item_zoom + 2}) {
        menu_command(item);
        const int zoom = view_zoom;
        ASSERT_TRUE(fake_window.outline);
        const Outline& last_cut = *fake_window.outline;
        ASSERT_EQ(last_cut.width, window_width()) << item;
        ASSERT_EQ(last_cut.height, window_height()) << item;
        EXPECT_EQ(dib_colour(*view_skin, key_index), key_colour_cut);
        std::vector<bool> kept(static_cast<std::size_t>(last_cut.width) *
                                   static_cast<std::size_t>(last_cut.height),
                               true);
        for (int y = 0; y < dib_rows(*view_skin); ++y)
            for (int x = 0; x < dib_columns(*view_skin); ++x)
                if (dib_get(*view_skin, x, y) == key_index)
                    for (int row = y * zoom / 2; row < (y + 1) * zoom / 2; ++row)
                        for (int column = x * zoom / 2; column < (x + 1) * zoom / 2; ++column)
                            kept[static_cast<std::size_t>(row * last_cut.width + column)] = false;
        const int stride = (last_cut.width + 7) / 8;
        for (int y = 0; y < last_cut.height; ++y)
            for (int x = 0; x < last_cut.width; ++x)
                ASSERT_EQ(
                    (last_cut.rows[static_cast<std::size_t>(y * stride + x / 8)] >> (7 - x % 8)) &
                        1,
                    kept[static_cast<std::size_t>(y * last_cut.width + x)] ? 1 : 0)
                    << x << ", " << y << " zoom " << zoom;
    }
    menu_command(item_frame);
    EXPECT_FALSE(fake_window.outline);
    EXPECT_EQ(dib_colour(*view_skin, key_index), key_colour_framed);
}

}  // namespace orvanel
