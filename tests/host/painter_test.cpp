// The handshake of a drawing command with the painter, on a platform whose main thread is the
// test's own.

#include "firmware/raster/refresh.h"
#include "host/host_calls.h"
#include "host/painter.h"
#include "host/painting.h"
#include "host/platform/platform.h"
#include "host/settings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>
#include <vector>

namespace orvanel {

namespace {

std::thread::id main_thread;
std::atomic<int> main_woken;
std::vector<PixelRect> painted;

void fresh_painter(int zoom) {
    main_thread = std::this_thread::get_id();
    main_woken = 0;
    painted.clear();
    view_zoom = zoom;
    open_painter();
}

void wait_for_first_request() { main_woken.wait(0); }

bool same(PixelRect a, PixelRect b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

/// Random dots in both images; the 16 bits behind a row stay 0.
void fill_images(unsigned seed) {
    std::mt19937_64 random{seed};
    for (UprightImage* image : {&lcd_image, &lcd_image_flash})
        for (auto& row : *image)
            for (std::size_t i = 0; i < row.size(); ++i)
                row[i] = i == 3 ? random() & ~std::uint64_t{0xFFFF} : random();
}

/// The first pixel of `rect` that isn't as the image's dot demands, as text; empty if none.
std::string wrong_pixel(const std::vector<std::uint32_t>& frame, const UprightImage& image,
                        PixelRect rect) {
    for (int y = rect.top; y < rect.bottom; ++y)
        for (int x = rect.left; x < rect.right; ++x) {
            const bool dark = image_dot(image, x / view_zoom, y / view_zoom);
            if (frame[static_cast<std::size_t>(y * window_width() + x)] !=
                (dark ? 0xFF000000 : 0xFFFFFFFF))
                return std::to_string(x) + ", " + std::to_string(y);
        }
    return {};
}

}  // namespace

// The platform under test: nothing sleeps, and a paint is a line in `painted`.
void sleep_ms(int /*ms*/) {}
void sleep_until_input(int /*ms*/) {}
void wake_firmware() {}
void wake_link() {}
void spend_byte_time() {}
bool on_main_thread() { return std::this_thread::get_id() == main_thread; }
void wake_main() {
    ++main_woken;
    main_woken.notify_all();
}
void paint_window(PixelRect rect) { painted.push_back(rect); }

TEST(Painter, a_drawing_command_goes_on_when_its_rectangle_is_painted) {
    fresh_painter(2);
    const std::uint32_t served_before = paints_served();
    std::atomic<bool> went_on = false;
    std::thread firmware([&went_on] {
        repaint_display(13, 0, 239, 127);
        went_on = true;
    });
    wait_for_first_request();
    std::this_thread::sleep_for(std::chrono::milliseconds{20});
    EXPECT_FALSE(went_on);
    serve_repaint();
    firmware.join();
    serve_repaint();  // a wake without a request paints nothing
    ASSERT_EQ(painted.size(), 1u);
    EXPECT_TRUE(same(painted[0], {26, 0, 480, 256}));
    EXPECT_EQ(paints_served() - served_before, 1u);
}

TEST(Painter, the_main_thread_paints_without_a_ticket) {
    fresh_painter(3);
    repaint_display(0, 5, 0, 5);
    ASSERT_EQ(painted.size(), 1u);
    EXPECT_TRUE(same(painted[0], {0, 15, 3, 18}));
    EXPECT_EQ(main_woken, 0);
}

TEST(Painter, sealing_lets_the_waiter_go_on_and_nobody_waits_ever_after) {
    fresh_painter(1);
    std::thread firmware([] {
        for (int i = 0; i < 3; ++i)
            repaint_display(0, 0, 7, 7);
    });
    wait_for_first_request();
    seal_painter();
    firmware.join();
    serve_repaint();  // the request that was left behind
    EXPECT_TRUE(painted.empty());

    fresh_painter(1);
    std::thread next_run([] { repaint_display(0, 0, 7, 7); });
    wait_for_first_request();
    serve_repaint();
    next_run.join();
    EXPECT_EQ(painted.size(), 1u);
}

TEST(Painter, every_request_of_a_flood_is_painted_once) {
    fresh_painter(1);
    constexpr int requests = 20000;
    std::atomic<bool> done = false;
    std::thread firmware([&done] {
        for (int i = 0; i < requests; ++i)
            repaint_display(i % 240, i % 128, 239, 127);
        done = true;
    });
    while (!done)
        serve_repaint();
    firmware.join();
    ASSERT_EQ(painted.size(), std::size_t{requests});
    for (int i = 0; i < requests; ++i)
        ASSERT_TRUE(same(painted[static_cast<std::size_t>(i)], {i % 240, i % 128, 240, 128})) << i;
}

TEST(ComposeWindow, shows_the_dots_of_the_present_phase_at_every_zoom) {
    fill_images(1);
    for (const int zoom : {1, 2, 3})
        for (const bool flash : {false, true}) {
            view_zoom = zoom;
            flash_phase = flash ? 1 : 0;
            std::vector<std::uint32_t> frame(
                static_cast<std::size_t>(window_width() * window_height()));
            compose_window(frame, {-5, -5, 5000, 5000});
            EXPECT_EQ(wrong_pixel(frame, flash ? lcd_image_flash : lcd_image,
                                  {0, 0, window_width(), window_height()}),
                      "")
                << "zoom " << zoom << (flash ? " flash" : "");
        }
}

TEST(ComposeWindow, composes_a_part_from_any_dot_to_any_dot) {
    fill_images(2);
    view_zoom = 2;
    flash_phase = 0;
    std::mt19937 random{3};
    for (int i = 0; i < 60; ++i) {
        const int x1 = static_cast<int>(random() % 480), y1 = static_cast<int>(random() % 256);
        const int w = 1 + static_cast<int>(random() % 480),
                  h = 1 + static_cast<int>(random() % 256);
        const PixelRect part{x1, y1, std::min(x1 + w, 480), std::min(y1 + h, 256)};
        std::vector<std::uint32_t> frame(480 * 256);
        compose_window(frame, part);
        ASSERT_EQ(wrong_pixel(frame, lcd_image, part), "");
        // Beyond the dots that the part touches, the frame stays.
        for (const int x : {part.left - 2, part.right + 1})
            if (x >= 0 && x < 480) {
                ASSERT_EQ(frame[static_cast<std::size_t>(y1 * 480 + x)], 0u);
            }
    }
}

TEST(ComposeWindow, a_part_outside_the_window_is_nothing) {
    view_zoom = 2;
    std::vector<std::uint32_t> frame(480 * 256);
    compose_window(frame, {480, 0, 500, 256});
    compose_window(frame, {0, -9, 480, 0});
    compose_window(frame, {-9, 0, 0, 256});
    EXPECT_EQ(frame, std::vector<std::uint32_t>(480 * 256));
}

}  // namespace orvanel
