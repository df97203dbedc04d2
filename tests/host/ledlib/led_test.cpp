// The library of lights, and the panel that it draws for the output lines.

#include "firmware/core/roof/device.h"
#include "host/ledlib/led.h"
#include "host/program/settings.h"
#include "host/window/ground/ports_panel.h"
#include "tests/support/fake_window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <vector>

namespace orvanel {

namespace {

constexpr int window = 1;

/// What a light looks like when it is drawn.
std::vector<std::uint32_t> image_of(int shape, int colour, int state) {
    fake_window.lights.clear();
    led_draw(led_add(window, 0, 0, shape, colour, state));
    EXPECT_EQ(fake_window.lights.size(), 1u);
    return fake_window.lights.empty() ? std::vector<std::uint32_t>{}
                                      : fake_window.lights.back().pixels;
}

/// Red, green and blue of the pixel in the middle.
std::array<int, 3> middle_of(const std::vector<std::uint32_t>& image) {
    const std::uint32_t pixel = image[image.size() / 2];
    return {static_cast<int>(pixel >> 16 & 0xFF), static_cast<int>(pixel >> 8 & 0xFF),
            static_cast<int>(pixel & 0xFF)};
}

}  // namespace

TEST(Led, draws_the_image_of_its_shape_colour_and_state) {
    led_init();
    std::set<std::vector<std::uint32_t>> images;
    for (const int shape :
         {led_circular, led_low_bar, led_square, led_flat_low_bar, led_flat_upright_bar}) {
        for (const int colour : {led_red, led_green, led_yellow, led_blue})
            for (const int state : {led_lit, led_dark})
                images.insert(image_of(shape, colour, state));
        images.insert(image_of(shape, led_grey, led_dark));
        const auto bright = middle_of(image_of(shape, led_green, led_lit));
        const auto dark = middle_of(image_of(shape, led_green, led_dark));
        EXPECT_EQ(bright, (std::array{0, 255, 0})) << shape;
        EXPECT_EQ(dark, (std::array{0, 128, 0})) << shape;
    }
    EXPECT_EQ(images.size(), 45u);
    const auto round = image_of(led_circular, led_green, led_lit);
    for (const std::size_t corner : {0u, 14u, 210u, 224u})
        EXPECT_EQ(round[corner], 0u) << "the ground shows through";
    led_reset();
}

TEST(Led, fields_change_by_handle_and_give_their_former_value) {
    led_init();
    for (int handle = 1; handle <= 13; ++handle)
        EXPECT_EQ(led_add(window, handle, 20, led_circular, led_green, led_dark), handle);
    EXPECT_EQ(led_set_x(13, 5), 13);
    EXPECT_EQ(led_set_y(13, 6), 20);
    EXPECT_EQ(led_set_shape(13, led_square), led_circular);
    EXPECT_EQ(led_set_state(13, led_lit), led_dark);
    fake_window.lights.clear();
    EXPECT_EQ(led_toggle(13), led_lit);
    ASSERT_EQ(fake_window.lights.size(), 1u) << "only the toggle draws";
    EXPECT_EQ(fake_window.lights[0].at.x, 5);
    EXPECT_EQ(fake_window.lights[0].at.y, 6);

    EXPECT_EQ(led_set_colour(13, led_grey), led_green);
    EXPECT_EQ(led_set_state(13, led_dark), led_lit) << "grey has no dark image";
    EXPECT_EQ(led_set_state(13, led_dark), led_lit);

    fake_window.lights.clear();
    EXPECT_EQ(led_set_window(12, 0), window);
    led_draw_many(std::array{0, 12, 14, -1});
    for (const int handle : {0, 14, -1}) {
        EXPECT_EQ(led_toggle(handle), -1);
        EXPECT_EQ(led_set_state(handle, led_lit), -1);
        EXPECT_EQ(led_set_colour(handle, led_red), -1);
        EXPECT_EQ(led_set_x(handle, 1), -1);
    }
    led_reset();
    EXPECT_EQ(led_set_y(1, 1), -1);
    led_draw(1);
    EXPECT_TRUE(fake_window.lights.empty());
}

TEST(PortsPanel, draws_seven_lights_and_begins_anew_when_opened_again) {
    for (int time = 0; time < 2; ++time) {
        ports_shown = 0x7B ^ 0xFF;
        fake_window.lights.clear();
        ports_open();
        ASSERT_EQ(fake_window.lights.size(), ports_on_panel);
        for (std::size_t i = 0; i < ports_on_panel; ++i) {
            const DrawnLight& light = fake_window.lights[i];
            EXPECT_EQ(light.at.x, 12 + 20 * static_cast<int>(i));
            EXPECT_EQ(light.at.y, 20);
            EXPECT_EQ(middle_of(light.pixels)[1], i == 2 ? 255 : 128) << "line " << i + 1;
        }
        ports_moved(300, 40);
        EXPECT_TRUE(ports_visible);
        ports_close();
        EXPECT_FALSE(ports_visible);
        EXPECT_EQ(ports_x, 300);
    }
    fake_window.lights.clear();
    ports_show(0xFF);
    EXPECT_TRUE(fake_window.lights.empty());
}

}  // namespace orvanel
