// Fonts between BDF, outlines and the image.

#include "kit/bdf.h"
#include "kit/code_page.h"
#include "kit/outline.h"
#include "tests/kit/kit_support.h"

#include <random>
#include <sstream>
#include <string>

namespace orvanel {

namespace {

Codes all_codes() { return Codes().set(); }

int pair_of(const Bytes& bytes, std::size_t at) { return bytes[at] | bytes[at + 1] << 8; }

/// A glyph as a file of few words draws it: rows of hexadecimal digits, the first bit leftmost.
struct PlainGlyph {
    int width = 0;
    std::vector<std::string> rows;
};

/// The characters of a BDF whose boxes are as wide as it says and stand on the base line.
std::map<int, PlainGlyph> plain_glyphs(const std::string& text) {
    std::map<int, PlainGlyph> glyphs;
    std::istringstream lines(text);
    int code = 0;
    bool rows = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("ENCODING ")) code = std::stoi(line.substr(9));
        if (line.starts_with("DWIDTH ")) glyphs[code].width = std::stoi(line.substr(7));
        if (line == "ENDCHAR") rows = false;
        if (rows) glyphs[code].rows.push_back(line);
        if (line == "BITMAP") rows = true;
    }
    return glyphs;
}

const char* const sans_file = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

const char* const small_head = "STARTFONT 2.1\nFONTBOUNDINGBOX 4 4 0 -1\n";

std::string character(int code, const std::string& body) {
    return "STARTCHAR x\nENCODING " + std::to_string(code) + "\n" + body + "ENDCHAR\n";
}

std::string fault_of_bdf(const std::string& text) {
    try {
        read_bdf("f.bdf", text, all_codes(), Encoding::stated);
    } catch (const Fault& fault) {
        return message_of(fault);
    }
    return {};
}

}  // namespace

TEST(KitFont, holds_each_glyph_of_a_bdf_dot_for_dot) {
    const std::string name = ORVANEL_SOURCE_DIR "/examples/device/small.bdf";
    const std::string text = file_text(name);
    const auto plain = plain_glyphs(text);
    std::string fault;
    const Bytes image = font_bytes(read_bdf(name, text, all_codes(), Encoding::stated), fault);
    ASSERT_EQ(fault, "");
    // Read back by the format's own page: head, table, rows.
    const int first = image[4], height = image[7];
    ASSERT_EQ(height, 6);
    EXPECT_EQ(plain.size(), 44U);
    for (const auto& [number, glyph] : plain) {
        const auto entry = static_cast<std::size_t>(16 + 3 * (code_of(number) - first));
        ASSERT_EQ(image[entry], glyph.width) << number;
        const auto bits = static_cast<std::size_t>(pair_of(image, 8) + pair_of(image, entry + 1));
        for (std::size_t y = 0; y < glyph.rows.size(); ++y)
            EXPECT_EQ(image[bits + y], std::stoi(glyph.rows[y], nullptr, 16))
                << "character " << number << ", row " << y;
        EXPECT_EQ(image[bits + 5], 0) << "the row below the base line";
    }
    std::string with_returns;
    for (const char c : text)
        with_returns += c == '\n' ? "\r\n" : std::string(1, c);
    const Font same = read_bdf(name, with_returns, all_codes(), Encoding::stated);
    EXPECT_EQ(font_bytes(same, fault), image);
}

TEST(KitFont, a_glyph_that_reaches_out_of_its_advance_gets_a_wider_cell) {
    const Font font = read_bdf(
        "f.bdf",
        small_head + character('j', "DWIDTH 2 0\nBBX 3 4 -1 -1\nBITMAP\n2000\n20\nA0\n40\n") +
            character('.', "DWIDTH 3 0\nBBX 1 1 1 0\nBITMAP\n80\n") + "ENDFONT\n",
        all_codes(), Encoding::stated);
    EXPECT_EQ(dots_text(font.glyphs.at('j')), "\n..#\n..#\n#.#\n.#.\n");
    EXPECT_EQ(dots_text(font.glyphs.at('.')), "\n...\n...\n.#.\n...\n");
    Font trimmed = read_bdf(
        "f.bdf", small_head + character('.', "DWIDTH 3 0\nBBX 1 1 1 0\nBITMAP\n80\n") + "ENDFONT\n",
        all_codes(), Encoding::stated);
    trim_rows(trimmed);
    widen(trimmed, 2);
    EXPECT_EQ(dots_text(trimmed.glyphs.at('.')), "\n.#...\n");
    // The rows are those that the font states, and more where a glyph needs them.
    for (const auto& [ascent, rows] : {std::pair{"3", "\n...\n...\n.#.\n"}, {"-1", "\n.#.\n"}}) {
        const Font stated =
            read_bdf("f.bdf",
                     small_head + ("FONT_ASCENT " + std::string(ascent)) + "\nFONT_DESCENT 0\n" +
                         character('.', "DWIDTH 3 0\nBBX 1 1 1 0\nBITMAP\n80\n") + "ENDFONT\n",
                     all_codes(), Encoding::stated);
        EXPECT_EQ(dots_text(stated.glyphs.at('.')), rows);
    }
}

TEST(KitFont, numbers_of_a_bdf_are_unicode_unless_it_is_our_own) {
    const std::string glyph = "DWIDTH 1 0\nBBX 1 1 0 0\nBITMAP\n80\n";
    const std::string own = std::string(small_head) + "CHARSET_REGISTRY \"Orvanel42\"\n" +
                            character(0xE4, glyph) + "ENDFONT\n";
    EXPECT_TRUE(read_bdf("f", own, all_codes(), Encoding::stated).glyphs.contains(0xE4));
    EXPECT_TRUE(read_bdf("f", own, all_codes(), Encoding::unicode).glyphs.contains(0x84));
    const std::string late = std::string(small_head) + character(0x2580, glyph) +
                             "CHARSET_REGISTRY \"Orvanel42\"\nENDFONT\n";
    EXPECT_FALSE(read_bdf("f", late, all_codes(), Encoding::stated).glyphs.contains(0x2580))
        << "0x2580 is no code of the module";
}

TEST(KitFont, tells_the_line_of_a_bad_bdf) {
    const std::string box = "DWIDTH 3 0\nBBX 3 2 0 0\n";
    EXPECT_EQ(fault_of_bdf("hello"), "f.bdf:1: error: expected STARTFONT: this is no BDF");
    EXPECT_EQ(fault_of_bdf(small_head), "f.bdf:2: error: expected ENDFONT: the file is cut short");
    EXPECT_EQ(fault_of_bdf(small_head + character(65, box + "BITMAP\nE0\n")),
              "f.bdf:9: error: expected a row of 2 hexadecimal digits");
    EXPECT_EQ(fault_of_bdf(small_head + character(65, "BBX 9999 1 0 0\n")),
              "f.bdf:5: error: expected a number, 0 to 512");
    EXPECT_EQ(fault_of_bdf(small_head + character(65, "BITMAP\n")),
              "f.bdf:5: error: expected BBX before BITMAP");
    EXPECT_EQ(fault_of_bdf(small_head + character(65, box) + character(65, box)),
              "f.bdf:12: error: the character 65 is there twice");
}

// Far more than fits is read past, since only 256 codes can be wanted.
TEST(KitFont, takes_its_characters_out_of_a_font_of_65536) {
    std::string text = small_head;
    for (int code = 0; code < 65536; ++code)
        text += character(code, "DWIDTH 8 0\nBBX 8 1 0 0\nBITMAP\nFF\n");
    const Font font = read_bdf("f", text + "ENDFONT\n", all_codes(), Encoding::stated);
    EXPECT_EQ(font.glyphs.size(), 224U);
    Font tall = font;
    for (auto& [code, glyph] : tall.glyphs)
        glyph = blank_dots(255, 255);
    tall.height = 255;
    std::string fault;
    EXPECT_TRUE(font_bytes(tall, fault).empty());
    EXPECT_EQ(fault, "takes more than 65535 bytes; take fewer characters or a smaller size");
}

TEST(KitFont, draws_outlines_hinted_and_without_grays) {
    const std::string file = file_text(sans_file);
    Font font;
    ASSERT_EQ(read_outlines(bytes_from(file), 12, Codes().set('A').set('g').set(0xF8), font), "");
    trim_rows(font);
    EXPECT_EQ(dots_text(font.glyphs.at('A')), R"(
...##...
...##...
..#..#..
..#..#..
..#..#..
.#....#.
.######.
.#....#.
#......#
........
........
........
)");
    const Bytes cut = bytes_from(file.substr(0, 5000));
    EXPECT_NE(read_outlines(cut, 12, all_codes(), font), "");
}

// A damaged size can make any glyph as large as it likes; what no font of the module can hold isn't
// drawn.
TEST(KitFont, refuses_outlines_that_are_too_large_before_drawing_them) {
    std::string file = file_text(sans_file);
    const auto put_pair = [&file](std::string_view table, std::size_t at, int value) {
        const std::size_t entry = file.find(table);  // in the directory: name, sum, offset
        std::size_t offset = 0;
        for (std::size_t i = 8; i < 12; ++i)
            offset = offset << 8 | static_cast<unsigned char>(file[entry + i]);
        file[offset + at] = static_cast<char>(value >> 8);
        file[offset + at + 1] = static_cast<char>(value & 0xFF);
    };
    const auto fault = [&file] {
        Font font;
        return read_outlines(bytes_from(file), 255, all_codes(), font);
    };
    put_pair("head", 18, 16);  // units of the em, of which the file's glyphs have 2048
    EXPECT_EQ(fault(), "is too large: at size = 255 its lines reach over 512 dots");
    put_pair("hhea", 4, 16);  // above the base line
    put_pair("hhea", 6, 0);   // and below
    EXPECT_EQ(fault(), "is too large: at size = 255 its glyph for code 32 reaches over 512 dots");
    put_pair("hhea", 34, 1);  // all glyphs move on as the first does,
    put_pair("hmtx", 0, 0);   // which is nowhere
    EXPECT_EQ(fault(), "is too large: at size = 255 its glyph for code 33 reaches over 512 dots");
}

// A font that is drawn, written as a BDF and read again is the same, whatever its shape.
TEST(KitFont, survives_the_road_through_a_bdf) {
    std::mt19937 random(3);
    for (int round = 0; round < 20; ++round) {
        Font font{static_cast<int>(1 + random() % 40), 0,
                  static_cast<int>(1 + random() % 30), static_cast<int>(random() % 5),
                  static_cast<int>(random() % 2),      {}};
        // Rows that were trimmed may leave the base line outside.
        font.ascent = static_cast<int>(random() % static_cast<unsigned>(font.height + 11)) - 5;
        for (unsigned i = 0; i < 1 + random() % 100; ++i) {
            Dots glyph = blank_dots(static_cast<int>(1 + random() % 40), font.height);
            for (unsigned k = 0; k < random() % 200; ++k)
                set_dot(glyph, static_cast<int>(random() % static_cast<unsigned>(glyph.width)),
                        static_cast<int>(random() % static_cast<unsigned>(glyph.height)));
            font.glyphs.insert_or_assign(static_cast<int>(random() % 256), glyph);
        }
        std::string fault;
        const Bytes bytes = font_bytes(font, fault);
        Font read;
        std::size_t size = 0;
        ASSERT_TRUE(read_font_bytes(bytes, read, size));
        EXPECT_EQ(size, bytes.size());
        Font again = read_bdf("f", write_bdf(font, "f"), all_codes(), Encoding::stated);
        again.cell_width = font.cell_width;
        again.gap = font.gap;
        again.format = font.format;
        EXPECT_EQ(font_bytes(again, fault), bytes);
    }
}

}  // namespace orvanel
