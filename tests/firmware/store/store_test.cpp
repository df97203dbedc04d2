#include "base/bytes.h"
#include "firmware/core/ground/backlight.h"
#include "firmware/core/ground/requests.h"
#include "firmware/core/read/read.h"
#include "firmware/core/roof/device.h"
#include "firmware/core/roof/loop.h"
#include "firmware/store/ground/eeprom.h"
#include "firmware/store/ground/macro.h"
#include "firmware/store/roof/eeprom_command.h"
#include "firmware/store/roof/timers.h"
#include "firmware/text/terminal.h"
#include "link/ground/port.h"
#include "tests/support/fake_platform.h"
#include "tests/support/module.h"
#include "tests/support/stream.h"

#include <gtest/gtest.h>

#include <string>

namespace orvanel {
namespace {

/// An image whose normal macro n prints the letter 'a' + n by ESC S B, on the line.
void image_of_letter_macros(int count) {
    Bytes image(data_start, erased_byte);
    std::size_t record = normal_macro_table;
    for (int n = 0; n < count; ++n) {
        const auto offset = image.size();
        for (const std::size_t byte : {offset & 0xFF, offset >> 8, std::size_t{5}, std::size_t{0}})
            image[record++] = static_cast<std::uint8_t>(byte);
        const auto letter = static_cast<std::uint8_t>('a' + n);
        image.insert(image.end(), {0x1B, 'S', 'B', 1, letter});
    }
    eeprom_reset_to(eeprom_small, image);
}

/// Runs the module with the stream for `ticks` ticks, each after enough idle passes, and gives what
/// it answered.
std::string run_ticks(const Bytes& stream, int ticks,
                      const std::function<void(int)>& at_tick = {}) {
    int sleeps = 0, ticked = 0;
    shutdown_requested = false;
    fake_platform.on_sleep = [&] {
        if (++sleeps == 1) {
            rx_pipe_put_block(stream);
            return;
        }
        if (sleeps % 8 != 0) return;
        if (ticked == ticks) {
            shutdown_requested = true;
            return;
        }
        if (at_tick) at_tick(ticked);
        ++ticked;
        firmware_tick();
    };
    run_firmware();
    fake_platform.on_sleep = nullptr;
    shutdown_requested = false;
    std::string said;
    for (const std::uint8_t byte : take_answers())
        said += static_cast<char>(byte);
    return said;
}

class Store : public testing::Test {
  protected:
    void SetUp() override { fresh_module(); }
};

TEST_F(Store, automatic_macros_step_as_their_modes_say) {
    struct Case {
        Bytes command;
        const char* said;
    };
    image_of_letter_macros(8);
    for (const auto& [command, said] : {
             Case{bytes("#MA5,3,1;"), "fedfedfe"}, Case{bytes("#MA3,5,1;"), "defdefde"},
             Case{bytes("#MJ1,3,1;"), "bcdcbcdc"}, Case{bytes("#ME1,3,1;"), "bcd"},
             Case{bytes("#ME3,1,1;"), "dcb"}, Case{bytes("#ME2,2,1;"), "c"},
             Case{bytes("#MG4,3;"), "e"},
             Case{bytes("#MG4,9;#ME1,1,1;"), "b"},  // at once, whatever the former one waits for
             Case{bytes("#MJ2,2,1;"), "cdefgh"},    // past its one number, and on to 255
             Case{bytes("#MA6,8,1;"), "ghghgh"},    // macro 8 is empty: skipped with its time
         })
        EXPECT_EQ(run_ticks(command, 7), said) << std::string(command.begin(), command.end());
}

TEST_F(Store, outside_bytes_end_the_automatic_macro_for_good) {
    image_of_letter_macros(3);
    const auto clear_at_2 = [](int tick) {
        if (tick == 2) auto_macro_mode = 0;
    };
    EXPECT_EQ(run_ticks(bytes("#MA0,2,1;"), 6, clear_at_2), "abc");
    EXPECT_EQ(auto_macro_mode, 0);
}

TEST_F(Store, process_macros_run_after_their_period_one_in_a_pass) {
    image_of_letter_macros(8);
    struct Case {
        Bytes command;
        const char* said;
        const char* what;
    };
    for (const auto& [command, said, what] : {
             Case{bytes("#MD1,2,0,1,2;"), "aba", "every second tick"},
             Case{bytes("#MD2,2,0,0,2;#MD1,2,1,1,2;"), "bababa", "the lowest number first"},
             Case{bytes("#MD1,3,0,2,1;"), "abcbabc", "to and fro"},
             Case{bytes("#MD1,0,0,1,1;"), "ab", "once"},
             Case{bytes("#MD1,1,0,1,1;"), "ab", "once, too"},
             Case{bytes("#MD5,2,0,1,1;#MD0,2,0,1,1;#MZ5,1;#MZ0,1;x"), "", "numbers out of range"},
             Case{bytes("#MD1,2,0,1,0;#MZ1,3;"), "ab", "stopped, then given a period"},
             Case{bytes("#MZ1,1;"), "", "never defined"},
             Case{bytes("#MD1,2,0,1,1;#MS0;"), "", "switched off"},
         })
        EXPECT_EQ(run_ticks(command, 7), said) << what;
    EXPECT_EQ(run_ticks(bytes("#MD1,2,0,1,128;"), 130), "") << "128 and more never fall due";
}

TEST_F(Store, what_is_due_waits_and_a_sequence_that_has_ended_begins_anew) {
    image_of_letter_macros(8);
    struct Case {
        Bytes first, late;
        const char* said;
    };
    for (const auto& [first, late, said] : {
             Case{bytes("#MD1,2,0,1,2;#MS0;"), bytes("#MS1;"), "ab"},
             Case{bytes("#MD1,2,0,1,2;#MS0;"), bytes("#MZ1,5;#MS1;"), "a"},
             Case{bytes("#MD1,2,0,1,2;#MS0;"), bytes("#MZ1,0;#MS1;"), ""},
             Case{bytes("#MD1,2,0,1,2;#MS0;"), bytes("#MD1,2,0,1,5;#MS1;"), ""},
             Case{bytes("#MD1,0,2,1,1;"), bytes("#MZ1,1;"), "cbcb"},
             Case{bytes("#MD1,0,1,2,1;"), bytes("#MZ1,1;"), "bcbc"},
         }) {
        const auto send_late = [&late](int tick) {
            if (tick == 3) rx_pipe_put_block(late);
        };
        EXPECT_EQ(run_ticks(first, 7, send_late), said)
            << std::string(first.begin(), first.end()) << std::string(late.begin(), late.end());
    }
}

TEST_F(Store, an_automatic_macro_due_with_a_process_macro_runs_first) {
    image_of_letter_macros(8);
    EXPECT_EQ(run_ticks(bytes("#MD1,2,0,0,2;#MG1,2;"), 3), "ba");
}

TEST_F(Store, programming_reads_back_with_its_crc) {
    const Bytes stream = bytes("\x1B&E\0\0\x0B\0W\x0B\0"
                               "123456789\x1B&E\0\0\0\0C\x1B&E\0\0\x0D\0R");
    eeprom_image[0x1000] = 0x55;
    run_stream(stream);
    EXPECT_EQ(eeprom_state, EepromState::programmed);
    EXPECT_EQ(eeprom_image[0x1000], 0xFF) << "a W at address 0 begins with an erase";
    const ImageCheck check = eeprom_checksum();
    EXPECT_EQ(check.image_length, 0x0B);
    EXPECT_EQ(check.stored_crc, 0xFFFF) << "a C of length 0 writes no CRC";
    run_stream(bytes("\x1B&E\0\1\1\0C"));
    EXPECT_EQ(eeprom_checksum().stored_crc, check.image_crc);
    run_stream(bytes("\x1B&E\0\0\0\0W"));
    EXPECT_EQ(eeprom_image[2], '1') << "a W of length 0 at address 0 erases nothing";
    EXPECT_EQ(run_ticks(bytes("\x1B&E\xFF\x7F\2\0R"), 0), std::string("\xFF\0", 2))
        << "0 beyond the end";
    eeprom_reset_to(eeprom_large, {});
    run_stream(bytes("\x1B&E\0\1\1\0C"));
    EXPECT_EQ(eeprom_checksum().image_length, 0xFFFF);
    EXPECT_EQ(eeprom_image[0xFFFF], 0xFF) << "no image, no CRC";
}

TEST_F(Store, each_restart_that_programs_leaves_a_copy_that_no_later_write_changes) {
    const Bytes write = bytes("\x1B&E\0\x0E\2\0Wab");
    const Bytes restart = bytes("\x1B&E\0\0\0\0J");
    run_stream(write);
    EXPECT_TRUE(eeprom_take_copy().empty()) << "nothing has made it whole";
    run_stream(restart);
    run_stream(bytes("\x1B&E\0\x0E\2\0Wcd"));
    const auto copy = eeprom_take_copy();
    ASSERT_EQ(copy.size(), static_cast<std::size_t>(eeprom_small));
    EXPECT_EQ(copy[0x0E01], 'b');
    EXPECT_TRUE(eeprom_take_copy().empty()) << "it waits for nobody twice";
    run_stream(bytes("\x1B&E\0\x0E\1\0C"));
    EXPECT_EQ(copy[0x0E01], 'b') << "the one that was taken stays";
    EXPECT_EQ(eeprom_take_copy()[0x0E00], 0xFF);
    run_stream(restart);
    run_stream(bytes("\x1B&E\xFE\x7F\x05\0Wabcde"));
    EXPECT_FALSE(eeprom_copy_waits()) << "an overflow takes it back";
    run_stream(restart);
    EXPECT_FALSE(eeprom_copy_waits()) << "it is reported, and the image is empty";
}

TEST_F(Store, the_crc_is_the_xmodem_one) {
    eeprom_reset_to(eeprom_small, bytes("\x09\0"
                                        "1234567"));
    // CRC-16/XMODEM of 09 00 "1234567".
    EXPECT_EQ(eeprom_checksum().image_crc, 0x440A);
}

TEST_F(Store, an_overflow_is_told_once_and_wipes_the_image_at_the_restart) {
    Bytes stream = bytes("\x1B&E\xFE\x7F\x05\0Wabcde\x1B&E\0\0\0\0J");
    const auto said = run_ticks(stream, 0);
    EXPECT_EQ(said, "") << "the restart drops the report with the pipe";
    ASSERT_EQ(fake_platform.messages.size(), 1u);
    EXPECT_TRUE(fake_platform.messages[0].starts_with("not enough EEPROM memory (32kB)\n"));
    EXPECT_EQ(eeprom_image[0x7FFF], 0xFF);
    EXPECT_EQ(eeprom_state, EepromState::unchanged);
    EXPECT_EQ(run_ticks(bytes("\x1B&E\xFE\x7F\x05\0Wabcde#SB1;x"), 0), "Ex")
        << "one report, and the stream stays in step";
}

TEST_F(Store, only_an_upper_case_operation_counts_and_process_macros_stop) {
    run_stream(bytes("\x1B&e\0\0\0\0j"));
    EXPECT_EQ(eeprom_state, EepromState::unchanged);
    EXPECT_FALSE(macro_processes_enabled);
    run_stream(bytes("\x1B&e\0\0\0\0J"));
    EXPECT_EQ(eeprom_state, EepromState::programmed);
}

TEST_F(Store, the_module_answers_in_its_two_forms) {
    // An image of length 2 and the CRC of its two bytes, and the CRC that it holds.
    eeprom_reset_to(eeprom_large, bytes("\2\0\x12\x34"));
    EXPECT_EQ(run_ticks(bytes("#SI"), 0),
              std::string("\x1BI\x15\xF0\0\x80\0\x18"
                          "B++\x13\x80\x13\x80\x40\0\x62\x66\x12\x34\2\0\0",
                          24));
    EXPECT_EQ(run_ticks(bytes("#SB3;\x1B"
                              "A\0"),
                        0),
              std::string("\x1B"
                          "A\0",
                          3));
    EXPECT_EQ(run_ticks(bytes("#UH3,1,12,2;"), 0), std::string("\x1BUL\3\1\x0A\2\0\0\0\0", 11));
}

TEST_F(Store, address_speed_and_lines_follow_their_commands) {
    configured_address = 0;
    run_stream(bytes("#KA5;#KA6;#+3;"));
    EXPECT_EQ(module_address, 5);
    EXPECT_EQ(line_baud, 9600);
    run_stream(bytes("#+7;"));
    EXPECT_EQ(line_baud, 115200);
    configured_address = 7;
    struct Case {
        Bytes command;
        int lines;
    };
    for (const auto& [command, lines] :
         {Case{bytes("#YW3,2;"), 0xFB}, Case{bytes("#YW0,$55;"), 0x55},
          Case{bytes("#YW9,0;"), 0xFE}, Case{bytes("#YW8,0;#YW15,3;#YW1,0;#YW1,1;"), 0x7F}}) {
        run_stream(command);
        EXPECT_EQ(output_port, lines) << std::string(command.begin(), command.end());
        EXPECT_EQ(ports_shown, ~static_cast<std::uint32_t>(lines));
    }
}

TEST_F(Store, the_backlight_fades_in_steps_of_two_to_where_it_was_sent) {
    const auto levels_after = [](const Bytes& command) {
        run_stream(command);
        std::vector<int> levels;
        firmware_tick();
        while (fake_platform.fade_running) {
            backlight_fade_step();
            levels.push_back(backlight_light.load().backlight_level);
        }
        return levels;
    };
    EXPECT_EQ(levels_after(bytes("#YH97;")), (std::vector<int>{98, 97, 97}));
    const std::vector<int> down = levels_after(bytes("#YH0;"));
    EXPECT_EQ(std::vector<int>(down.end() - 4, down.end()), (std::vector<int>{4, 0, 0, 0}))
        << "2 percent shows as dark";
    run_stream(bytes("#YH254;"));
    firmware_tick();
    backlight_fade_step();
    EXPECT_EQ(backlight_light.load().backlight_level, 0) << "dark in one step";
    backlight_goal = BacklightGoal{1, 0};
    backlight_fade_step();
    EXPECT_EQ(backlight_light.load().backlight_level, 1) << "one percent going up shows as full";
    set_backlight_level(0);
    params[0] = 255;
    set_brightness();
    backlight_fade_step();
    EXPECT_EQ(backlight_light.load().backlight_level, 1) << "full in one step";
    run_stream(bytes("#YH200;"));
    EXPECT_EQ(backlight_goal.load().backlight_target, 100);
    run_stream(bytes("#YL\3"));
    for (int i = 0; i < 3; ++i)
        firmware_tick();
    EXPECT_EQ(backlight_goal.load().backlight_target, 0) << "the time limit has run out";
    run_stream(bytes("#YL\3#YH50;"));
    EXPECT_EQ(backlight_goal.load().backlight_off_timer, 0) << "a brightness cancels the limit";
    run_stream(bytes("#YL\1"));
    EXPECT_EQ(backlight_goal.load().backlight_target, 100) << "a reset forgets the brightness";
    run_stream(bytes("#YH50;#YL\1"));
    EXPECT_EQ(backlight_goal.load().backlight_off_timer, 0) << "1 is on, without a limit";
    EXPECT_EQ(backlight_goal.load().backlight_target, 50);
}

TEST_F(Store, a_wait_sleeps_in_tenths_and_a_restart_ends_it) {
    params[0] = 7;
    wait_command();
    EXPECT_EQ(fake_platform.slept_ms, 700);
    fake_platform.on_sleep = [] { restart_requested = true; };
    params[0] = 200;
    wait_command();
    EXPECT_EQ(fake_platform.slept_ms, 800);
    restart_requested = false;
}

}  // namespace
}  // namespace orvanel
