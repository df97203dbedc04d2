// Text in and out: hexadecimal, quotes and UTF-8.

#include "base/hex.h"
#include "base/quoting.h"
#include "base/utf8.h"
#include "base/words.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvanel {

TEST(Hex, a_number_has_as_few_digits_as_it_takes) {
    for (const auto& [value, digits] : {std::pair<std::uint32_t, const char*>{0, "0"},
                                        {0xF, "F"},
                                        {0x10, "10"},
                                        {0xFFFFFFFF, "FFFFFFFF"}})
        EXPECT_EQ(hex_number(value), digits);
    EXPECT_EQ(hex_digits(0x1234, 2), "34");
    EXPECT_EQ(hex_digits(7, 4), "0007");
}

TEST(Hex, characters_beside_the_digits_are_none) {
    for (const char c : {'/', ':', '@', 'G', '`', 'g', '\0', '\xB0'})
        EXPECT_EQ(hex_digit(c), -1) << int{c};
    EXPECT_EQ(hex_pair("aF0"), 0xAF);
    EXPECT_EQ(hex_pair("a"), -1);
    EXPECT_EQ(hex_pair("a-"), -1);
}

TEST(Quoting, every_byte_comes_back_from_its_piece) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    for (const std::string& piece : {text_piece(all), text_piece(all, "\\\"\n")}) {
        std::string_view rest = piece;
        std::vector<std::uint8_t> bytes;
        EXPECT_EQ(take_bytes(rest, bytes), "");
        EXPECT_EQ(std::string(bytes.begin(), bytes.end()), all);
    }
}

TEST(Utf8, characters_at_the_edges_of_their_length_come_back) {
    for (const char32_t code :
         {0x0U, 0x7FU, 0x80U, 0x7FFU, 0x800U, 0xD7FFU, 0xE000U, 0xFFFFU, 0x10000U, 0x10FFFFU}) {
        std::string text;
        append_utf8(text, code);
        const auto [back, length] = utf8_character(text + "x");
        EXPECT_EQ(back, code);
        EXPECT_EQ(length, text.size()) << std::uint32_t{code};
    }
}

TEST(Utf8, what_no_character_begins_with_has_no_length) {
    for (const std::string_view text :
         {"", "\x80", "\xC1\x81", "\xE0\x81\x81", "\xF0\x80\x81\x81", "\xED\xA0\x80",
          "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xC3", "\xE2\x82", "\xC3x"}) {
        EXPECT_EQ(utf8_character(text).length, 0u) << printable(text);
        EXPECT_EQ(utf8_character(text).code, 0u) << printable(text);
    }
}

}  // namespace orvanel
