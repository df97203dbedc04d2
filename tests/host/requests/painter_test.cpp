// The handshake of a drawing command with the painter, and what else the firmware leaves to the
// main thread, on a platform whose main thread is the test's own.

#include "firmware/core/ground/backlight.h"
#include "firmware/core/roof/device.h"
#include "firmware/raster/refresh.h"
#include "host/program/settings.h"
#include "host/requests/main_requests.h"
#include "host/requests/painter.h"
#include "host/skin/view.h"
#include "host/window/ground/ports_panel.h"
#include "seam/host_calls.h"
#include "seam/platform.h"
#include "tests/support/fake_window.h"

#include <gtest/gtest.h>

#include <atomic>
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

}  // namespace

// The platform under test: nothing sleeps, and a paint is a line in `painted`.
void sleep_ms(int /*ms*/) {}
void sleep_until_woken(int /*ms*/) {}
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
        repaint_rect(13, 0, 239, 127);
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
    fresh_painter(2);
    screen_scale_percent = 150;
    repaint_rect(0, 5, 0, 5);
    screen_scale_percent = 100;
    ASSERT_EQ(painted.size(), 1u);
    EXPECT_TRUE(same(painted[0], {0, 15, 3, 18}));
    EXPECT_EQ(main_woken, 0);
}

TEST(MainRequests, each_beep_of_the_module_sounds_once_if_the_user_wants_to_hear_it) {
    fresh_painter(1);
    fake_window = {};
    for (const bool wanted : {true, false}) {
        beep_on = wanted;
        std::thread firmware([] {
            beep();
            beep();
        });
        firmware.join();
        serve_main_requests();
        serve_main_requests();
        EXPECT_EQ(fake_window.beeps, 2);
    }
}

TEST(MainRequests, the_panel_shows_what_the_module_has_set_meanwhile) {
    fresh_painter(1);
    ports_open();
    fake_window = {};
    ports_shown = 3;
    std::thread firmware(show_ports);
    firmware.join();
    EXPECT_EQ(main_woken, 1);
    EXPECT_TRUE(fake_window.lights.empty()) << "the lights are the main thread's";
    serve_main_requests();
    EXPECT_EQ(fake_window.lights.size(), ports_on_panel);
    ports_close();
}

TEST(HostCalls, one_fade_sets_one_timer_and_each_step_repaints) {
    fake_window = {};
    start_fade_timer();
    start_fade_timer();
    stop_fade_timer();
    EXPECT_EQ(fake_window.fades, (std::vector<bool>{true, false}));
    ASSERT_EQ(prepare_view(), "");
    const std::uint32_t lit = dib_colour(*view_lcd, 0);
    set_backlight_level(0);
    colours_changed();
    EXPECT_EQ(fake_window.repaints, 1);
    EXPECT_NE(dib_colour(*view_lcd, 0), lit);
    set_backlight_level(backlight_level_full);
}

TEST(Painter, sealing_lets_the_waiter_go_on_and_nobody_waits_ever_after) {
    fresh_painter(1);
    std::thread firmware([] {
        for (int i = 0; i < 3; ++i)
            repaint_rect(0, 0, 7, 7);
    });
    wait_for_first_request();
    seal_painter();
    firmware.join();
    serve_repaint();  // the request that was left behind
    EXPECT_TRUE(painted.empty());

    fresh_painter(1);
    std::thread next_run([] { repaint_rect(0, 0, 7, 7); });
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
            repaint_rect(i % 240, i % 128, 239, 127);
        done = true;
    });
    while (!done)
        serve_repaint();
    firmware.join();
    ASSERT_EQ(painted.size(), std::size_t{requests});
    for (int i = 0; i < requests; ++i)
        ASSERT_TRUE(same(painted[static_cast<std::size_t>(i)], {i % 240, i % 128, 240, 128})) << i;
}

}  // namespace orvanel
