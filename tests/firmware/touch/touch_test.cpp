#include "firmware/core/ground/requests.h"
#include "firmware/core/roof/loop.h"
#include "firmware/raster/line.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"
#include "firmware/store/ground/eeprom.h"
#include "firmware/store/ground/macro.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/bars.h"
#include "firmware/touch/finger.h"
#include "firmware/touch/menu.h"
#include "firmware/touch/menu_definitions.h"
#include "link/ground/pipes.h"
#include "tests/support/fake_platform.h"
#include "tests/support/font_image.h"
#include "tests/support/module.h"
#include "tests/support/stream.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace orvanel {
namespace {

using Step = std::function<void()>;

Step send(std::string text) {
    return [text = std::move(text)] {
        rx_pipe_put_block(std::vector<std::uint8_t>{text.begin(), text.end()});
    };
}
Step touch(int x, int y) {
    return [x, y] { put_finger(x, y); };
}
const Step lift = lift_finger;

/// One step whenever the module idles; its answers come back as text, with a number below 32 or
/// above 126 as <n> and ESC as a blank.
std::string run(const std::vector<Step>& steps) {
    std::size_t next = 0;
    shutdown_requested = false;
    fake_platform.on_sleep = [&] {
        if (rx_count() > 0) return;
        if (next == steps.size())
            shutdown_requested = true;
        else
            steps[next++]();
    };
    run_firmware();
    fake_platform.on_sleep = nullptr;
    shutdown_requested = false;
    std::string said;
    for (const std::uint8_t byte : take_answers()) {
        if (byte == 0x1B)
            said += ' ';
        else if (byte < 32 || byte > 126)
            said += '<' + std::to_string(byte) + '>';
        else
            said += static_cast<char>(byte);
    }
    return said;
}

class Touch : public testing::Test {
  protected:
    void SetUp() override {
        fresh_module();
        eeprom_reset_to(eeprom_small, image_with_font());
    }
};

TEST_F(Touch, the_eighty_first_area_overwrites_the_last_row_and_no_more) {
    const auto rows = [](int n) {
        std::string areas;
        for (; n > 0; --n)
            areas += "#AH0,0,200,20,";
        return areas;
    };
    const std::string menu = "#AM0,50,50,80,49,50,10,go|a|b\r", key = "#AT100,60,140,90,65,66,\r";
    // The finger that pressed the old area leaves the new one.
    EXPECT_EQ(run({send(rows(79) + "#AT0,60,40,90,49,50,\r"), touch(10, 70), send(key), lift}),
              " A<1>1 A<1>B");
    EXPECT_EQ(area_count, 80);
    // A list stays open without its row: the key is silent until the opener closes it.
    EXPECT_EQ(run({send(rows(78) + menu), touch(20, 60), lift, send(key), touch(120, 70), lift,
                   touch(20, 60), lift, touch(120, 70)}),
              " A<1>1 A<1>2 A<1>A");
    // An opener in the last row gives it to its own list, which takes the finger's release; its
    // slot stays taken.
    std::string eight;
    for (int n = 0; n < 8; ++n)
        eight += menu;
    EXPECT_EQ(run({send(rows(79) + menu), touch(20, 60), lift, send("#AL0,0," + eight)}),
              " N<1><9>");
    EXPECT_EQ(area_count, 7);
}

TEST_F(Touch, a_removal_below_the_finger_moves_what_names_a_row) {
    // Key 1 vanishes, key 3 moves into its row, and the finger on it is still on it.
    EXPECT_EQ(run({send("#AT0,0,20,20,49,50,a\r#AT30,0,50,20,51,52,b\r#AT60,0,80,20,53,54,c\r"),
                   touch(70, 10), send("#AL49,0,"), lift}),
              " A<1>5 A<1>6");
    // The finger's own key vanishes while another moves: no code, and its release is swallowed.
    EXPECT_EQ(run({send("#AT0,0,20,20,49,50,a\r#AT30,0,50,20,51,52,b\r"), touch(10, 10),
                   send("#AL49,0,"), lift, touch(40, 10), lift}),
              " A<1>1 A<1>3 A<1>4");
    EXPECT_EQ(area_count, 1);
}

TEST_F(Touch, the_row_that_fills_a_hole_is_not_looked_at) {
    // Rows 49 x x x: the first goes, the last fills its place, the middle goes, one stays.
    run({send(
        "#AH0,0,0,0,#AT0,0,20,20,49,0,a\r#AT0,0,20,20,49,0,b\r#AT0,0,20,20,49,0,c\r#AL49,0,")});
    EXPECT_EQ(area_count, 2);
    EXPECT_EQ(touch_area(1).down_code, 49);
    run({send("#AT0,0,20,20,49,0,a\r#AH5,5,9,9,#AL0,1,")});
    EXPECT_EQ(area_count, 0);
    run({send("#AT0,0,20,20,49,0,a\r#AV20,20,0,")});
    EXPECT_EQ(area_count, 0) << "edges count";
}

TEST_F(Touch, a_finger_hits_inside_the_edges_and_moves_by_two_dots) {
    // Each edge, then the first dots inside; then the second dot of a move down.
    EXPECT_EQ(run({send("#AT40,40,80,80,49,50,\r"), touch(40, 60), touch(80, 60), touch(60, 40),
                   touch(60, 80), lift, touch(41, 41), lift, touch(79, 79)}),
              " A<1>1 A<1>2 A<1>1");
    EXPECT_EQ(run({send("#AH40,40,126,126,"), touch(50, 50), touch(50, 51), touch(50, 52)}),
              " H<3><1>22 H<3><2>24");
    run({send("#AD0,0,50,50,4,"), touch(10, 10), lift});
    EXPECT_EQ((std::vector<int>{pen_width, pen_height, pen_link}), (std::vector<int>{1, 1, 1}))
        << "the finger's pen is its own";
}

TEST_F(Touch, a_press_on_key_switch_or_opener_sounds) {
    const std::string areas =
        "#AT0,0,20,20,0,0,\r#AK30,0,50,20,0,0,\r#AM60,0,80,20,0,0,0,go|a\r#AH90,0,110,20,";
    for (const auto& [first, beeps] : {std::pair{"", 1}, std::pair{"#AS0,", 0}}) {
        std::vector<Step> steps{send(first + areas)};
        for (const auto& [x, sounds] :
             {std::pair{10, 1}, std::pair{40, 1}, std::pair{100, 0}, std::pair{70, 1}}) {
            const auto count = [n = beeps * sounds] {
                EXPECT_EQ(fake_platform.beeps, n);
                fake_platform.beeps = 0;
            };
            const auto silence = [] { EXPECT_EQ(fake_platform.beeps, 0) << "at the release"; };
            steps.insert(steps.end(), {touch(x, 10), count, lift, silence});
        }
        run(steps);
    }
}

TEST_F(Touch, a_key_that_a_list_silences_stays_held) {
    const std::string area = "#AE0,#AM100,0,140,20,0,0,10,go|a|b\r#AT0,0,20,20,0,50,\r#NT0,";
    EXPECT_EQ(run({send(area), touch(120, 10), lift, touch(10, 10), send("#NT2,"), lift}), " T<0>");
    EXPECT_EQ(open_menu_slot, 0);
    EXPECT_EQ(touch_area(1).state, 1);
    EXPECT_EQ(main_plane()[0], 0xFF);  // still inverted
    EXPECT_EQ(run({send(area), touch(120, 10), lift, touch(10, 10), send("#NT2,"), lift,
                   touch(120, 10), lift, touch(10, 10)}),
              " T<0>");
    EXPECT_EQ(main_plane()[0], 0xFF) << "pressed again it doesn't invert a second time";
}

TEST_F(Touch, menus_end_where_their_slots_or_texts_do) {
    std::string nine;
    for (int n = 0; n < 9; ++n)
        nine += "#AM" + std::to_string(n * 25) + ",0," + std::to_string(n * 25 + 20) + ",20,48," +
                std::to_string(n + 49) + ",10,go|x|y\r";
    // The ninth finds no slot and defines nothing; with one freed there is room again.
    run({send(nine)});
    EXPECT_EQ(area_count, 8);
    run({send(nine + "#AL50,0,#AM0,50,40,70,48,65,10,go|x\r")});
    EXPECT_EQ(area_count, 8);
    // A text without rows opens nothing and asks for nothing; its codes go out all the same.
    EXPECT_EQ(run({send("#NT0,#AM0,0,40,20,65,66,10,go\r"), touch(10, 10)}), " A<1>A");
    EXPECT_EQ(menu_items, 0);
    // 300 rows after a label are cut at the buffer's end, and no other menu's text is read.
    EXPECT_EQ(run({send("#AM0,0,40,20,65,66,48,go|" + std::string(400, '|') +
                        "\r#AM60,0,100,20,67,68,10,go|x\r"),
                   touch(10, 10), lift, touch(80, 10), touch(70, 24), lift}),
              " A<1>A A<1>B A<1>C N<1><10>");
}

TEST_F(Touch, a_waiting_request_is_dropped_with_its_opener) {
    const std::string opener = "#NT0,#AM0,0,40,20,0,0,10,go|a|b\r";
    EXPECT_EQ(run({send(opener), touch(10, 10), send("#AL0,0,#AH0,0,9,9,#NT2,")}), " T<0>");
    EXPECT_EQ(menu_items, 0);
    EXPECT_EQ(run({send(opener), touch(10, 10), send("#NT2,")}), " T<0>");
    EXPECT_EQ(menu_items, 2);
    EXPECT_EQ(run({send("#AT50,0,70,20,49,0,\r" + opener), touch(10, 10), send("#AL49,0,#NT2,")}),
              " T<0>");
    EXPECT_EQ(menu_items, 2) << "it follows its opener";
    std::string rows;
    for (int n = 0; n < 79; ++n)
        rows += "#AH0,100,20,120,";
    EXPECT_EQ(run({send(rows + opener), touch(10, 10), send("#AH0,100,20,120,#NT2,")}), " T<0>");
    EXPECT_EQ(menu_items, 0) << "it names a row that was overwritten";
}

TEST_F(Touch, a_waiting_request_is_kept_by_0_and_served_once_by_2) {
    EXPECT_EQ(run({send("#NT0,#AM0,0,40,20,0,0,10,go|a|b\r"), touch(10, 10), send("#NT0,"),
                   [] { EXPECT_EQ(menu_items, 0); }, send("#NT2,"),
                   [] { EXPECT_EQ(menu_items, 2); }, lift, touch(10, 10), lift, touch(10, 10)}),
              " T<0> T<0>");
}

TEST_F(Touch, the_opening_of_menus_keeps_its_mode_where_it_is_not_told_one) {
    const std::string opener = "#AM0,0,40,20,0,0,10,go|a|b\r";
    EXPECT_EQ(run({send("#NT2,#NT3," + opener), touch(10, 10)}), "");
    EXPECT_EQ(menu_items, 2) << "the power-on mode opens at once";
    EXPECT_EQ(
        run({send("#NT0,#NT2,#NT3," + opener), touch(10, 10), send("#NT1,"),
             [] { EXPECT_EQ(menu_items, 2) << "what waits"; }, lift, send("#NA"), touch(10, 10)}),
        " T<0>");
    EXPECT_EQ(menu_items, 2) << "1 opens what waits, and what is pressed from then on";
}

TEST_F(Touch, a_code_of_1_is_a_code) {
    const auto opener = [](int x, const char* codes) {
        const std::string left = std::to_string(x), right = std::to_string(x + 40);
        return "#AM" + left + ",0," + right + ",20," + codes + ",go|a|b\r";
    };
    EXPECT_EQ(run({send(opener(0, "65,1,1") + opener(60, "1,66,0")), touch(10, 10), lift,
                   touch(70, 10), lift, touch(10, 10), touch(10, 25), lift}),
              " A<1>A A<1><1> A<1><1> A<1>B A<1>A N<1><1>");
    EXPECT_EQ(run({send("#AT0,0,20,20,1,1,\r#AK30,0,50,20,1,1,\r"), touch(10, 10), lift,
                   touch(40, 10), lift, touch(40, 10), lift}),
              " A<1><1> A<1><1> A<1><1> A<1><1>");
}

TEST_F(Touch, what_defines_an_area_shows_it_to_its_last_dot_with_its_label_zoomed) {
    const auto columns = [](int x1, int x2) {
        int count = 0;
        for (int x = x1; x <= x2; ++x)
            for (int y = 20; y < 60; ++y)  // below the cursor
                if (image_dot(lcd_image, x, y)) {
                    ++count;
                    break;
                }
        return count;
    };
    for (const char* area : {"#AT0,0,99,63,0,0,3\r", "#AM0,0,99,63,0,0,0,3|x\r"}) {
        run({send("#AE1,"), send(area)});
        EXPECT_TRUE(image_dot(lcd_image, 99, 60)) << "its border " << area;
        run({send("#AE0,"), send(area)});
        const int plain = columns(0, 99);
        run({send("#AE0,#AZ4,1,"), send(area)});
        EXPECT_EQ(columns(0, 99), 4 * plain) << area;
        EXPECT_GT(plain, 0) << area;
    }
}

TEST_F(Touch, an_open_list_keeps_its_rotation_and_gives_way_to_a_box) {
    const std::string opener = "#AM0,0,40,20,65,66,48,go|a|b\r";
    EXPECT_EQ(run({send(opener), touch(10, 10), send("#NW1,"), touch(4, 30), lift}),
              " A<1>A N<1>1");
    EXPECT_EQ(run({send(opener), touch(10, 10), lift, send("#ND100,60,1,x|y\r"), touch(10, 10)}),
              " A<1>A A<1>A");
    // Whoever opens or chooses begins without a row; touch off closes a list in silence.
    EXPECT_EQ(run({send(opener), touch(10, 10), lift, send("#NN"), touch(10, 10), lift,
                   touch(10, 10), send("#NS")}),
              " A<1>A A<1>B A<1>A N<1><0>");
    EXPECT_EQ(run({send(opener), touch(10, 10), touch(4, 30), lift, send("#NS")}),
              " A<1>A N<1>1 N<1><0>");
    EXPECT_EQ(run({send(opener), touch(10, 10), lift, send("#AA0,")}), " A<1>A");
    EXPECT_EQ(menu_items, 0);
    // Without its area a list is no longer open: other areas react.
    EXPECT_EQ(run({send(opener + "#AT100,0,120,20,67,0,\r"), touch(10, 10), lift,
                   send("#AV4,30,0,"), touch(110, 10)}),
              " A<1>A A<1>C");
}

TEST_F(Touch, a_box_stands_where_it_was_sent_and_highlights_rows_beyond_the_glass_at_its_edge) {
    // Over its opener, from the dot above it.
    EXPECT_EQ(run({send("#AM0,60,40,80,0,0,48,Ogo|a|b\r"), touch(10, 70), touch(10, 52), lift}),
              " N<1>1");
    // The box before it is closed once the new one's place is read.
    run({send("#ND0,0,1,a|b\r#ND100,60,1,a|b\r")});
    EXPECT_TRUE(plane_get(main_plane(), 100, 60));
    std::string rows = "#ND0,0,0,a";
    for (int n = 1; n < 40; ++n)
        rows += "|a";
    run({send(rows + "\r#NP")});
    EXPECT_FALSE(plane_get(main_plane(), 3, 127)) << "row 40 inverts the frame's lowest line";
}

TEST_F(Touch, commands_meet_the_finger_where_it_stands) {
    const Step key = send("#AE0,#AT0,0,20,20,65,66,\r");
    // Inside a key a move is nothing. Touch on, too, lets go of it, and the next sample presses.
    EXPECT_EQ(run({key, touch(10, 10), touch(15, 10), send("#AA1,"), touch(5, 5)}),
              " A<1>A A<1>B A<1>A");
    // With all areas gone the finger has to be lifted, unless a reset comes first.
    EXPECT_EQ(run({key, touch(10, 10), send("#AL0,0,#AT0,0,20,20,67,0,\r"), touch(15, 10),
                   touch(10, 10), lift, touch(10, 10)}),
              " A<1>A A<1>C");
    run({send("#AI0,"), key, touch(10, 10), send("#AL65,0,")});
    EXPECT_EQ(main_plane()[0], 0) << "what hasn't inverted doesn't invert back";
    EXPECT_EQ(run({key, touch(10, 10), send("#AL0,0,"), [] { request_restart(0); },
                   send("#AT0,0,20,20,67,0,\r"), touch(10, 10)}),
              " A<1>C");
}

TEST_F(Touch, switches_invert_with_ESC_A_I_off_and_share_codes_and_groups) {
    run({send("#AE0,#AI0,#AK0,0,20,20,0,0,\r"), touch(10, 10), send("#AI1,")});
    EXPECT_EQ(main_plane()[0], 0xFF);
    // Of two with one code the query means the last. The group of the next switch outlives a reset.
    EXPECT_EQ(run({send("#AE0,#AR5,#AK0,0,20,20,49,0,\r#AK30,0,50,20,49,0,\r"), touch(10, 10),
                   send("#AX49,")}),
              " A<1>1 X<2>1<0>");
    EXPECT_EQ(run({send("#AK0,0,20,20,49,0,\r"), touch(10, 10), send("#AG5,")}), " A<1>1 G<2><5>1");
    EXPECT_FALSE(plane_get(main_plane(), 1, 1)) << "so does no border: it is framed again";
}

TEST_F(Touch, codes_start_the_macros_of_the_image) {
    std::vector<std::uint8_t> image = image_with_font();
    const auto add = [&image](std::size_t record, std::uint8_t letter) {
        image[record] = static_cast<std::uint8_t>(image.size() & 0xFF);
        image[record + 1] = static_cast<std::uint8_t>(image.size() >> 8);
        image[record + 2] = 5;
        image[record + 3] = 0;
        image.insert(image.end(), {0x1B, 'S', 'B', 1, letter});
    };
    add(touch_macro_table + 4 * 65, 't');
    add(menu_macro_table + 4 * 12, 'm');
    eeprom_reset_to(eeprom_small, image);
    EXPECT_EQ(run({send("#AT0,0,20,20,65,0,\r#MA9,9,100,"), touch(10, 10)}), "t");
    EXPECT_EQ(auto_macro_mode, 0) << "a touch that starts a macro ends the automatic one";
    // Row 2 of a box whose first row has code 11; without a row no macro.
    EXPECT_EQ(run({send("#ND0,0,2,a|b\r#NM11,#ND0,0,0,a|b\r#NM13,")}), "m");
}

TEST_F(Touch, a_height_byte_of_128_is_one_image_of_128_rows) {
    const std::string picture = "\x01\x80" + std::string(128, '\x80');
    run({send("#UL0,0," + picture)});
    EXPECT_TRUE(plane_get(main_plane(), 0, 127));
    std::vector<std::uint8_t> image(0x22, 0);
    image[0x20] = 0x22;
    image.insert(image.end(), {8, 0x80});
    image.resize(image.size() + 128);
    eeprom_reset_to(eeprom_small, image);
    EXPECT_EQ(run({send("#AU0,0,0,65,66,\r"), touch(4, 100)}), " A<1>A");
}

TEST_F(Touch, the_touched_bar_snaps_to_the_nearest_value) {
    struct Case {
        const char* bar;
        int x, y;
        const char* said;
    };
    for (const auto& [bar, x, y, said] : {
             Case{"#BR1,0,0,99,20,0,10,0,1,", 14, 5, " B<2><1><1>"},
             Case{"#BR1,0,0,99,20,0,10,0,1,", 16, 5, " B<2><1><2>"},
             Case{"#BL1,0,0,99,20,40,50,0,1,", 85, 5, " B<2><1>)"},
             Case{"#BO1,0,0,20,99,40,50,1,1,", 5, 50, " B<2><1>-"},
             Case{"#BU1,0,0,20,99,40,50,3,0,", 5, 98, " B<2><1>2"},
             // A pointer is held by its middle.
             Case{"#BR1,0,0,99,20,0,2,2,40,", 33, 5, " B<2><1><0>"},
             Case{"#BR1,0,0,99,20,0,2,2,40,", 34, 5, " B<2><1><1>"},
             // All 256 values, and pointers that leave no way to go.
             Case{"#BR1,0,0,239,20,0,255,0,1,", 238, 5, " B<2><1><252>"},
             Case{"#BR1,0,0,2,20,40,50,3,1,", 1, 5, " B<2><1>("},
             Case{"#BR1,0,0,3,20,40,41,2,3,", 2, 5, " B<2><1>)"},
         }) {
        EXPECT_EQ(run({send(std::string("#AL0,0,") + bar + "#AB1,"), touch(x, y), lift}), said)
            << bar;
    }
}

TEST_F(Touch, a_bar_tells_each_change_and_not_each_move) {
    EXPECT_EQ(run({send("#BR1,0,0,99,20,0,10,0,1,#AB1,#AQ2,"), touch(12, 5), touch(14, 5),
                   touch(26, 5), lift}),
              " B<2><1><1> B<2><1><3>");
}

TEST_F(Touch, bars_make_do_with_what_their_rectangle_leaves) {
    run({send("#BR1,0,0,99,0,0,9,1,1,#BA1,9,#BA1,0,")});
    EXPECT_FALSE(plane_get(main_plane(), 99, 0)) << "one dot high it has no frame";
    EXPECT_EQ(run({send("#BR1,0,0,99,20,0,9,2,100,#BA1,9,#BS1,")}), " B<2><1><9>")
        << "a pointer as long as its bar gets a tenth of it";
}

TEST_F(Touch, areas_outlive_neither_a_reset_nor_their_bar) {
    EXPECT_EQ(run({send("#BR1,0,0,99,20,0,10,0,1,#AB1,#AH0,50,9,59,#AB1,#BD1,0,")}), "");
    EXPECT_EQ(area_count, 2);  // the second area of the bar fills the hole of the first
    EXPECT_EQ(run({send("#AH0,0,20,20,"), [] { request_restart(0); }, touch(5, 5), lift}), "");
    EXPECT_EQ(area_count, 0);
    EXPECT_FALSE(touch_area_at(5, 5));
}

}  // namespace
}  // namespace orvanel
