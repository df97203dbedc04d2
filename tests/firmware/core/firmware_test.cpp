#include "firmware/core/ground/draw_area.h"
#include "firmware/core/ground/requests.h"
#include "firmware/core/read/read.h"
#include "firmware/core/roof/commands.h"
#include "firmware/core/roof/loop.h"
#include "firmware/core/roof/power_on.h"
#include "firmware/raster/line.h"
#include "firmware/raster/picture.h"
#include "firmware/raster/refresh.h"
#include "firmware/raster/screen_store.h"
#include "firmware/store/ground/eeprom.h"
#include "firmware/store/roof/timers.h"
#include "firmware/text/layout.h"
#include "firmware/text/terminal.h"
#include "firmware/touch/bars.h"
#include "firmware/touch/finger.h"
#include "firmware/touch/keys.h"
#include "firmware/touch/look.h"
#include "firmware/touch/menu.h"
#include "firmware/touch/tracking.h"
#include "link/ground/port.h"
#include "tests/support/fake_platform.h"
#include "tests/support/module.h"
#include "tests/support/stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace orvanel {
namespace {

class Firmware : public testing::Test {
  protected:
    void SetUp() override { fresh_module(); }
};

bool terminal_blank(int col, int row) {
    for (int y = 0; y < 8; ++y)
        if (terminal_plane[plane_index(8 * (col - 1), 8 * (row - 1) + y)] != 0) return false;
    return true;
}

int cursor_column_after(std::span<const std::uint8_t> stream) {
    run_stream(stream);
    return terminal.term_col;
}

TEST_F(Firmware, what_is_no_command_goes_to_the_terminal_and_an_undefined_op_to_nobody) {
    struct Case {
        std::vector<std::uint8_t> sent;
        int printed;
        const char* what;
    };
    for (const auto& [sent, printed, what] : {
             Case{bytes("#e"), 1, "an unknown group prints its upper-cased letter"},
             Case{bytes("##"), 1, "so does the other lead-in"},
             Case{bytes("\x1B\x1B"), 1, "and ESC behind ESC"},
             Case{bytes("#\xE9"), 1, "and bytes above Z"},
             Case{bytes("#=x"), 1, "a group without effect is consumed"},
             Case{bytes("#GQ12"), 2, "parameters of an unknown op are new input"},
             Case{bytes("#DL;"), 1, "a command without parameters takes no terminator"},
             Case{bytes("#Rq1,2,3,4;x"), 1, "group R reads its rectangle all the same"},
             Case{bytes("#GP1,2\x1B"
                        "DL"),
                  2, "a lead-in that ends a number is gone"},
             Case{bytes("#&xy"), 1, "ESC & reads one letter"},
         })
        EXPECT_EQ(cursor_column_after(sent), 1 + printed) << what;
}

TEST_F(Firmware, both_lead_ins_give_the_same_dots_in_either_case) {
    run_stream(bytes("\x1BGD\x0A\x14\x64\x32"));
    const PlaneSet drawn = graphics_planes;
    run_stream(bytes("#gd10,20,$64,50;"));
    EXPECT_EQ(drawn, graphics_planes);
    EXPECT_TRUE(plane_get(main_plane(), 10, 20) && plane_get(main_plane(), 100, 50));
}

TEST_F(Firmware, a_lead_in_selects_the_graphics_planes_behind_terminal_text) {
    run_stream(bytes("x#RS0,0,9,9;"));
    EXPECT_TRUE(plane_get(main_plane(), 9, 9));
    EXPECT_TRUE(plane_get(flash_plane_of(main_plane()), 9, 9));
}

TEST_F(Firmware, a_restart_in_mid_command_lets_it_run_out_with_zeros) {
    int sleeps = 0;
    reset_cycle();
    put("#GZ4,4;#GP");
    fake_platform.on_sleep = [&sleeps] {
        if (++sleeps == 3) request_restart(2);
    };
    while (!restart_requested) {
        if (!read_next_byte()) continue;
        lead_in = current_byte;
        select_graphics_planes();
        run_command();
    }
    EXPECT_EQ(draw_area, (DrawArea{0, 0, 2, 2})) << "the point was drawn at 0, 0 with a pen of 4";
    reset_cycle();
    EXPECT_FALSE(restart_requested);
    EXPECT_EQ(pen_width, 1);
    EXPECT_EQ(reset_kind, 2) << "the kind outlives the reset";
}

TEST_F(Firmware, whatever_an_idle_pass_can_find_wakes_it) {
    reset_cycle();
    const auto wakes_by = [](auto&& change) {
        const long before = firmware_wakes;
        change();
        return firmware_wakes - before;
    };
    EXPECT_GT(wakes_by([] { put("x"); }), 0);
    EXPECT_GT(wakes_by([] { put_finger(1, 2); }), 0);
    EXPECT_GT(wakes_by([] { lift_finger(); }), 0);
    EXPECT_GT(wakes_by([] { firmware_tick(); }), 0);
    EXPECT_GT(wakes_by([] { request_restart(0); }), 0);
}

TEST_F(Firmware, a_pass_that_leaves_something_due_sleeps_for_one_pass_only) {
    // Without macros in the image a start runs nothing, and its pass is over.
    const auto idle_sleeps_after = [](const std::vector<std::uint8_t>& sent) {
        fresh_module();
        int sleeps = 0;
        fake_platform.on_sleep = [&] {
            if (++sleeps == 1) rx_pipe_put_block(sent);
            if (sleeps == 2) firmware_tick();  // the next sleep is for this tick
            if (sleeps == 4) shutdown_requested = true;
        };
        run_firmware();
        fake_platform.on_sleep = nullptr;
        shutdown_requested = false;
        return fake_platform.idle_sleeps;
    };
    EXPECT_EQ(idle_sleeps_after(bytes("#MD1,2,9,9,1;")), 3) << "nothing is left";
    EXPECT_EQ(idle_sleeps_after(bytes("#MD1,2,9,9,1;#MD2,2,0,0,1;")), 2)
        << "the second waits its turn";
    EXPECT_EQ(idle_sleeps_after(bytes("#MA9,0,0;")), 1) << "the sequence has run from the start";
}

TEST_F(Firmware, a_reset_brings_back_every_word_but_those_that_survive) {
    run_stream(bytes("#AA0;#AS0;#AE3;#AI0;#AQ2;#AR3;#MS0;#GZ4,4;#GV3;#GD9,9,20,20;#ZF0;#ZZ3,3;#ZV2;"
                     "#ZW1;#ZB2;#ZY5;#QZ9;#UB2;#UV3;#DA#DC#TA#TC0;"
                     "#TP7,7;#TS#TEtext"));
    terminal.saved_col = 9;
    menu_items = 2;
    flash_phase.store(1);
    com_set_baud(1200);
    module_address = 3;
    eeprom_image[0x100] = 0x5A;
    store_slots[clipboard_slot].height = 4;
    store_slots[clipboard_slot].buffer[0] = 0x77;
    run_stream({});
    EXPECT_EQ((std::vector<int>{pen_width, pen_height, pen_link, last_point_x, last_point_y}),
              (std::vector<int>{1, 1, 1, 0, 0}));
    EXPECT_EQ((std::vector<int>{string_style.zoom_x, string_style.zoom_y, string_style.link,
                                string_style.rotation, string_flash}),
              (std::vector<int>{1, 1, 4, 0, 0}));
    EXPECT_EQ(touch_style.link, 3);
    EXPECT_EQ((std::vector<int>{bitmap_flash, bitmap_style.link}), (std::vector<int>{0, 4}));
    EXPECT_EQ((std::vector<int>{flash_period, flash_phase}), (std::vector<int>{6, 0}));
    EXPECT_TRUE(graphic_on && terminal_on && terminal.cursor_on && !clipboard_view);
    EXPECT_TRUE(touch_enabled && touch_beep && touch_invert && macro_processes_enabled);
    EXPECT_EQ(touch_border, 1);
    EXPECT_EQ(bar_send_mode, BarReport::at_release);
    EXPECT_EQ(menu_items, 0) << "no box is open";
    EXPECT_EQ(switch_group, 3);
    EXPECT_EQ(string_font.id, 5) << "selected, though the image has none";
    EXPECT_EQ(string_font.height, 8) << "and its other fields outlive the failed selection";
    EXPECT_EQ(line_baud, com_baud);
    EXPECT_EQ(module_address, configured_address);
    EXPECT_EQ(store_slots[clipboard_slot].height, 0);
    EXPECT_EQ(store_slots[clipboard_slot].buffer[0], 0x77) << "an emptied slot keeps its bytes";
    EXPECT_EQ(eeprom_image[0x100], 0x5A);
    EXPECT_EQ(terminal.saved_col, 9);
    EXPECT_TRUE(std::ranges::all_of(graphics_planes, [](int byte) { return byte == 0; }));
    EXPECT_TRUE(terminal_blank(2, 1));
}

TEST_F(Firmware, a_terminal_command_brings_the_cursor_back) {
    for (const auto& command : {bytes("#TP7,7;"), bytes("#T?")}) {
        run_stream(command);
        EXPECT_TRUE(cursor_shown) << "its next blink is ticks away";
    }
}

TEST_F(Firmware, flashing_and_line_gap_of_strings_are_their_own_and_within_their_bits) {
    run_stream(bytes("#ZB1;#AT0,0,20,20,0,0,x\r#ZY20;"));
    EXPECT_EQ(string_flash, 1) << "a label doesn't flash, and leaves strings as they were";
    EXPECT_EQ(string_font.line_gap, 4);
    run_stream(bytes("#ZB1;#ZB3;"));
    EXPECT_EQ(string_flash, 0);
}

TEST_F(Firmware, the_tick_toggles_the_phase_when_its_timer_runs_out) {
    run_stream(bytes("#QZ2;#YS0;"));
    EXPECT_EQ(fake_platform.beeps, 0) << "no tone of length 0";
    blink_timer = 6;
    firmware_tick();
    EXPECT_EQ(blink_timer, 5);
    EXPECT_EQ(flash_phase, 0);
    fake_platform.paints = 0;
    firmware_tick();
    EXPECT_EQ(flash_phase, 1);
    EXPECT_EQ(fake_platform.paints, 1);
    EXPECT_EQ(flash_timer, 2);
    EXPECT_TRUE(tick_yield_pending);
    tick_enabled = false;
    firmware_tick();
    EXPECT_EQ(flash_timer, 2) << "a stopped tick counts nothing";
}

}  // namespace
}  // namespace orvanel
