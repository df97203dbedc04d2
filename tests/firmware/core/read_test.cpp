#include "firmware/core/ground/draw_area.h"
#include "firmware/core/ground/requests.h"
#include "firmware/core/read/read.h"
#include "firmware/store/ground/eeprom.h"
#include "firmware/store/ground/macro.h"
#include "tests/support/fake_platform.h"
#include "tests/support/stream.h"

#include <gtest/gtest.h>

#include <string>

namespace orvanel {
namespace {

class ReadLayer : public testing::Test {
  protected:
    void SetUp() override {
        fresh_platform();
        power_on_pipes();
        power_on_macros();
        restart_requested = false;
        shutdown_requested = false;
        tick_yield_pending = false;
        lead_in = lead_in_hash;
    }
    void TearDown() override { restart_requested = shutdown_requested = false; }
};

void put_text(const std::string& text) {
    rx_pipe_put_block({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

TEST_F(ReadLayer, numbers_skip_what_stands_in_front_and_take_one_byte_behind) {
    struct Case {
        const char* sent;
        std::uint32_t value;
        const char* left;
    };
    for (const auto& [sent, value, left] :
         {Case{"10,x", 10, "x"}, Case{",, -7;;9", 7, ";9"}, Case{"$1Ffg", 0x1FF, ""},
          Case{"$;5", 0, "5"}, Case{"abc4\x1B", 4, ""}, Case{"4294967299 ", 3, ""},
          Case{"$123456789,", 0x23456789, ""}}) {
        put_text(sent);
        EXPECT_EQ(read_number(), value) << sent;
        std::string rest;
        while (rx_count() > 0)
            rest += static_cast<char>(rx_pipe_get());
        EXPECT_EQ(rest, left) << sent;
    }
}

TEST_F(ReadLayer, coordinates_are_cut_to_8_bits_then_clamped_then_ordered) {
    put("200,300,255,$ff;");
    read_rect();
    EXPECT_EQ(draw_area, (DrawArea{200, 44, 239, 127}));
    lead_in = lead_in_esc;
    put("\xF0\x80\x05\x02");
    read_rect();
    EXPECT_EQ(draw_area, (DrawArea{5, 2, 239, 127}));
}

TEST_F(ReadLayer, letters_are_upper_cased_and_nothing_else_is) {
    put("az{`\xE4");
    std::string letters;
    for (int i = 0; i < 5; ++i)
        letters += static_cast<char>(read_letter());
    EXPECT_EQ(letters, "AZ{`\xE4");
}

TEST_F(ReadLayer, a_restart_ends_every_read_at_once) {
    restart_requested = true;
    put("5,");
    EXPECT_EQ(read_number(), 0u);
    EXPECT_EQ(read_byte(), 0);
    EXPECT_EQ(rx_count(), 2) << "a pending restart takes nothing";
    EXPECT_EQ(fake_platform.bytes_spent, 0) << "its zeros cost no time";
    EXPECT_EQ(fake_platform.slept_ms, 0);
}

TEST_F(ReadLayer, an_empty_source_and_a_tick_sleep_5_ms_each) {
    EXPECT_FALSE(read_next_byte());
    EXPECT_EQ(fake_platform.slept_ms, 5);
    tick_yield_pending = true;
    put("a");
    EXPECT_TRUE(read_next_byte());
    EXPECT_EQ(fake_platform.slept_ms, 10);
    EXPECT_FALSE(tick_yield_pending);
}

/// An image with these bytes after the tables, and normal macro n at `macros[n]`.
void image_with(std::initializer_list<std::vector<std::uint8_t>> macros) {
    std::vector<std::uint8_t> image(data_start, erased_byte);
    std::size_t record = normal_macro_table;
    for (const auto& macro : macros) {
        for (const std::size_t value : {image.size(), macro.size()}) {
            image[record++] = static_cast<std::uint8_t>(value & 0xFF);
            image[record++] = static_cast<std::uint8_t>(value >> 8);
        }
        image.insert(image.end(), macro.begin(), macro.end());
    }
    eeprom_reset_to(eeprom_small, image);
}

TEST_F(ReadLayer, a_macro_goes_before_the_pipe_and_hands_over_mid_command) {
    image_with({bytes("ab"), bytes("cd")});
    put("xy");
    ASSERT_TRUE(run_macro(normal_macro_table, 0));
    std::string read;
    read += static_cast<char>(read_byte());
    ASSERT_TRUE(run_macro(normal_macro_table, 1));
    for (int i = 0; i < 5; ++i)
        read += static_cast<char>(read_byte());
    EXPECT_EQ(read, "acdbxy");
}

TEST_F(ReadLayer, a_tail_call_keeps_its_depth_and_the_ninth_level_is_refused) {
    image_with({bytes("a"), bytes("bc"), {}});
    ASSERT_TRUE(run_macro(normal_macro_table, 0));
    read_byte();
    EXPECT_EQ(macro_depth, 0) << "the level is gone with its last byte";
    for (int i = 0; i < max_macro_depth; ++i)
        EXPECT_TRUE(run_macro(normal_macro_table, 1));
    EXPECT_FALSE(run_macro(normal_macro_table, 1));
    for (int i = 0; i < 2 * max_macro_depth; ++i)
        read_byte();
    EXPECT_EQ(macro_depth, 0);
    EXPECT_FALSE(run_macro(normal_macro_table, 2)) << "an empty record";
    EXPECT_FALSE(run_macro(normal_macro_table, 3)) << "an erased record";
}

TEST_F(ReadLayer, a_macro_record_beyond_the_image_reads_zeros) {
    std::vector<std::uint8_t> image(0x0234, 0xFF);
    image[0x0230] = 0xFE;
    image[0x0231] = 0x7F;  // two bytes before the end of 32 KiB
    image[0x0232] = 4;
    image[0x0233] = 0;
    eeprom_reset_to(eeprom_small, image);
    ASSERT_TRUE(run_macro(normal_macro_table, 0));
    const std::vector<int> read{read_byte(), read_byte(), read_byte(), read_byte()};
    EXPECT_EQ(read, (std::vector<int>{0xFF, 0xFF, 0, 0}));
}

}  // namespace
}  // namespace orvanel
