// Lines of a macro and the bytes of the command language.

#include "firmware/core/ground/trace.h"
#include "kit/code_page.h"
#include "kit/commands.h"
#include "tests/kit/kit_support.h"
#include "tests/support/module.h"

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace orvanel {

namespace {

Bytes assembled(const std::vector<std::string>& lines) {
    const Names names{{"code", {Kind::touch, 9}}, {"face", {Kind::picture, 3}}};
    const Assembly assembly{&names, [](int) { return Bytes{1, 1, 0x80}; }};
    Bytes bytes;
    for (const std::string& text : lines)
        assemble_line({"", 0, text}, assembly, bytes);
    return bytes;
}

/// The command as its row says, each number 1, raw parts as short as may be.
Bytes command_of(const CommandRow& row, std::uint8_t opening, char letter) {
    Bytes bytes{opening, static_cast<std::uint8_t>(row.group)};
    if (row.op != 0) bytes.push_back(static_cast<std::uint8_t>(row.op));
    const auto append = [&bytes](std::string_view more) {
        bytes.insert(bytes.end(), more.begin(), more.end());
    };
    for (const Parameter& parameter : row.parameters) {
        for (int i = 0; i < numbers_of(parameter.read); ++i)
            append(opening == lead_in_esc ? "\1" : "1,");
        switch (parameter.read) {
        case Read::raw_string:
        case Read::raw_text:
            append("ab\n");
            break;
        case Read::raw_picture:
            append("\x08\1\xAA");
            break;
        case Read::raw_byte:
            append({&letter, 1});
            break;
        case Read::raw_bytes:
            append("x");
            break;
        case Read::raw_word:
            append({"\2\0", 2});
            break;
        case Read::raw_data:
            append(letter == 'W' ? "yz" : "");
            break;
        default:
            break;
        }
    }
    return bytes;
}

// What the module tells of the stream that it reads.
std::size_t bytes_read = 0;
std::vector<std::size_t> ends;  // bytes read when a command ended

void listen(const TraceEvent& event) {
    if (event.kind == TraceKind::byte) ++bytes_read;
    if (event.kind == TraceKind::end) ends.push_back(bytes_read);
}

}  // namespace

// The table is what kits, pages and programs go by; the module's handlers and the kit's reader each
// take a stream apart by themselves.
TEST(KitCommands, module_and_kit_take_what_the_row_of_a_command_says) {
    for (const CommandRow& row : command_rows)
        for (const std::uint8_t opening : {lead_in_esc, lead_in_hash})
            for (const char letter : {'W', 'R'}) {
                const Bytes command = command_of(row, opening, letter);
                Bytes stream = command;
                const Bytes more = bytes_from("#GP5,5,#GP6,6,#GP7,7,");
                stream.insert(stream.end(), more.begin(), more.end());
                const std::string letters = letters_of(*find_form(row.group, row.op));
                const std::optional<Parsed> parsed = parse_command(stream);
                ASSERT_TRUE(parsed && parsed->form == find_form(row.group, row.op)) << letters;
                EXPECT_EQ(parsed->size, command.size()) << letters;

                fresh_module();
                bytes_read = 0;
                ends.clear();
                trace_listener = listen;
                run_stream(stream);
                trace_listener = nullptr;
                ASSERT_FALSE(ends.empty()) << letters;
                EXPECT_EQ(ends[0], command.size()) << letters;
            }
}

TEST(KitCommands, writes_a_command_under_both_lead_ins) {
    struct Case {
        std::vector<std::string> lines;
        Bytes bytes;
    };
    const std::vector<Case> cases{
        {{"ESC GD 10,20,100,50"}, {0x1B, 'G', 'D', 10, 20, 100, 50}},
        {{"#gd10,20,100,50"}, bytes_from("#GD10,20,100,50;")},
        {{"#DL", "# Z F $F", "", "; nothing"}, bytes_from("#DL#ZF15;")},
        {{"#ZL 1,2 \"a\\\"b\\|\""}, bytes_from("#ZL1,2,a\"b\\|\n")},
        {{"esc zl 1,2,\"°\""}, {0x1B, 'Z', 'L', 1, 2, 0xF8, 0}},
        {{"#AT 1,2,3,4,code,0,\"\""}, bytes_from("#AT1,2,3,4,9,0,\n")},
        {{"#SB 1B \"ok\""}, bytes_from("#SB3,\x1Bok")},
        {{"ESC SB \"ok\""}, {0x1B, 'S', 'B', 2, 'o', 'k'}},
        {{"#SB \"" + std::string(255, 'x') + '"'}, bytes_from("#SB255," + std::string(255, 'x'))},
        {{"#YL 2"}, {'#', 'Y', 'L', 2}},
        {{"#UL 5,6,picture face"}, {'#', 'U', 'L', '5', ',', '6', ',', 1, 1, 0x80}},
        {{"ESC UL 5,6,08 01 AA"}, {0x1B, 'U', 'L', 5, 6, 8, 1, 0xAA}},
        {{"#&E 0x220,0xC10,C"}, {'#', '&', 'E', 0x20, 2, 0x10, 0x0C, 'C'}},
        {{"ESC &E 0x0E30,W,01 \"x\""}, {0x1B, '&', 'E', 0x30, 0x0E, 2, 0, 'W', 1, 'x'}},
        {{"text \"Hi\\r\\n\" 00"}, {'H', 'i', 13, 10, 0}},
    };
    for (const auto& [lines, bytes] : cases)
        EXPECT_EQ(assembled(lines), bytes) << lines[0];
}

TEST(KitCommands, reads_a_macro_back_as_it_would_be_written) {
    const std::vector<std::string> lines{
        "#TA",
        "ESC ZL 1,2,\"Größe \\| ~x~ \\\\\"",
        "#AM 1,2,3,4,5,6,7,\"UMenu|a|b\"",
        "#SB \"abc\"",
        "ESC &E 544,3088,C",
        "#&E 16,W, 01 02",
        "ESC UL 0,0,08 01 FF",
        "text \"two lines\\r\\n\"",
        "text \"on the glass\"",
        "ESC =",
        "#YL 1",
    };
    EXPECT_EQ(lines_from(assembled(lines)), lines);
}

// What the module takes but nobody writes: other separators, hexadecimal numbers, small letters,
// unknown commands, a command that ends in the middle.
TEST(KitCommands, gives_any_bytes_back_as_lines) {
    std::vector<Bytes> samples{bytes_from("#GD10,20;$1F 50x#gp1,2,"),
                               bytes_from("\x1BGX\x1BO#RQ1,2,3,4,#ZL1,2,abc"),
                               {0x1B, 'S', 'B', 200, 1, 2},
                               {0x1B, '&', 'E', 0, 0, 5, 0, 'W', 1},
                               {0x1B, 0x1B, '#', '#', 0},
                               {0x1B}};
    std::mt19937 random(6);
    for (int i = 0; i < 300; ++i) {
        Bytes bytes(random() % 200);
        for (std::uint8_t& byte : bytes) {
            constexpr std::string_view frequent = "\x1B##GZAMURB&ELDTC0123,;\n";
            byte = static_cast<std::uint8_t>(
                random() % 3 == 0
                    ? random()
                    : static_cast<unsigned char>(frequent[random() % frequent.size()]));
        }
        samples.push_back(std::move(bytes));
    }
    for (const char* name : {"panel", "text", "pens", "mixed", "flashing", "terminal"})
        samples.push_back(
            bytes_from(file_text(std::string(ORVANEL_SOURCE_DIR "/examples/") + name + ".orv")));
    for (const Bytes& bytes : samples)
        ASSERT_EQ(assembled(lines_from(bytes)), bytes);
}

TEST(KitCodePage, turns_every_code_to_a_character_and_back) {
    for (int code = ' '; code < 256; ++code)
        EXPECT_EQ(code_of(character_of(code)), code);
    EXPECT_EQ(code_of(0x3BC), 0xE6) << "the Greek letter serves as the micro sign";
    EXPECT_EQ(code_of(0x20AC), -1) << "there is no euro sign";
}

}  // namespace orvanel
