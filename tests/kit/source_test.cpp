// What a kit source may say, and what is said of what it may not.

#include "kit/image.h"
#include "tests/kit/kit_support.h"

#include <string>
#include <vector>

namespace orvanel {

namespace {

using KitSource = KitFolder;

const char* const one_character =
    "STARTFONT 2.1\nFONTBOUNDINGBOX 4 4 0 -1\nSTARTCHAR A\nENCODING 65\nDWIDTH 2 0\n"
    "BBX 1 1 0 0\nBITMAP\n80\nENDCHAR\nENDFONT\n";

/// The bytes of the item with this name.
Bytes item_bytes(const Kit& kit, std::string_view name) {
    for (const Item& item : kit.items)
        if (item.name == name) return item.bytes;
    return {};
}

}  // namespace

TEST_F(KitSource, tells_each_fault_with_its_place) {
    put("ok.pbm", "P1 2 2 1 0 0 1");
    put("wide.pbm", "P4 300 1 " + std::string(38, '\0'));
    put("tall.pbm", "P4 8 100 " + std::string(100, '\0'));
    put("huge.pbm", "P4 10000 10000 ");
    put("loop.kit", "include loop.kit\n");
    put("bad.kit", "\n\n[nothing]\n");
    put("text.txt", "hello");
    put("a.bdf", one_character);
    for (int i = 0; i < 17; ++i)
        put("deep" + std::to_string(i) + ".kit", "include deep" + std::to_string(i + 1) + ".kit\n");
    const std::string long_macro = "[normal macro 1]\nbytes " + std::string(2 * 65535, '0');
    const std::string five_macros = "[power-on macro]\n[power-on macro]\n[power-on macro]\n"
                                    "[power-on macro]\n[power-on macro]\n";
    put("short.fh7", Bytes{'F', 'H', '7', 0, 1, 200});
    struct Case {
        std::string_view source, message;
    };
    const std::vector<Case> cases{
        // The source as such
        {"hello\n", "k.kit:1:1: error: expected a heading in brackets"},
        {"kit 2\n", "k.kit:1:5: error: this program reads kit 1"},
        {"include none.kit\n", "k.kit:1:9: error: 'none.kit': no such file"},
        {"include loop.kit\n", "loop.kit:1:9: error: 'loop.kit': includes itself"},
        {"\n\ninclude bad.kit\n", "bad.kit:3:2: error: 'nothing' is no heading; expected image, "
                                  "constants, font, picture, power-on macro, normal macro, touch "
                                  "macro, menu macro, bytes or stream"},
        {"include deep0.kit\n",
         "deep14.kit:1:9: error: 'deep15.kit': is included too deep, at most "
         "16 files"},
        // Headings
        {five_macros, "k.kit:5:2: error: no number is free, the last power-on macro is 3"},
        {long_macro, "k.kit:1:2: error: the macro takes more than 65534 bytes"},
        {"[font 16]\n", "k.kit:1:7: error: the number is outside 1 to 15"},
        {"[font x", "k.kit:1:8: error: expected a number, a name or ]"},
        {"[normal 3]", "k.kit:1:9: error: expected the word macro"},
        {"[stream between]", "k.kit:1:9: error: expected before, after-block or behind"},
        {"[touch macro 3]\n[touch macro 3 b]",
         "k.kit:2:2: error: touch macro 3 stands in line 1 already"},
        {"[touch macro a]\n[menu macro a]", "k.kit:2:2: error: the name 'a' is taken"},
        {"[touch macro percent]", "k.kit:1:2: error: the name 'percent' is taken"},
        {"[bytes 70000]", "k.kit:1:8: error: the number is outside 0 to 65535"},
        // Settings
        {"[image]\nmemory 32", "k.kit:2:1: error: expected KEY = VALUE"},
        {"[image]\nmemory = 48", "k.kit:2:10: error: expected 32 or 64"},
        {"[imge]\nsize = 48", "k.kit:1:2: error: 'imge' is no heading; is it 'image'?"},
        {"[image]\n  lenght = 48",
         "k.kit:2:3: error: 'lenght' is no setting here; is it 'length'?"},
        {"[image]\nsize = 48", "k.kit:2:1: error: 'size' is no setting here; expected memory, "
                               "length or crc"},
        {"[image]\ncrc = 1\ncrc = 2", "k.kit:3:1: error: 'crc' is set twice"},
        {"[stream]\nblock = 1", "k.kit:2:9: error: the number is outside 16 to 65535"},
        {"[stream]\nrestart = maybe", "k.kit:2:11: error: expected yes or no"},
        {"[constants]\nleft = 5\nright = lefd + 2",
         "k.kit:3:9: error: 'lefd' is the name of nothing here; is it 'left'?"},
        {"[constants]\na = b", "k.kit:2:5: error: 'b' is the name of nothing here"},
        {"[constants]\na = 5 - 6", "k.kit:2:5: error: a is -1, outside 0 to 65535"},
        {"[constants]\na = 1 2", "k.kit:2:7: error: expected the end of the line"},
        // Commands
        {"[normal macro 1]\nhello",
         "k.kit:2:1: error: expected a command behind # or ESC, text, or bytes"},
        {"[normal macro 1]\n#", "k.kit:2:2: error: expected the letters of a command"},
        {"[normal macro 1]\n#GX 1", "k.kit:2:3: error: group G has the commands DPRVWZ"},
        {"[normal macro 1]\n#O", "k.kit:2:2: error: there is no command group O"},
        {"[normal macro 1]\n#TX", "k.kit:2:3: error: group T has the commands ACEPQRSV"},
        {"[normal macro 1]\n#GP 1", "k.kit:2:6: error: expected a comma; ESC G P takes x, y"},
        {"[normal macro 1]\nESC GP 1,", "k.kit:2:10: error: y is missing; ESC G P takes x, y"},
        {"[normal macro 1]\n#GP 1,256", "k.kit:2:7: error: y is 256, outside 0 to 255"},
        {"[normal macro 1]\n#GP 1,\"a\"", "k.kit:2:7: error: expected y, a number or a name"},
        {"[normal macro 1]\n#GP 1,2,3",
         "k.kit:2:8: error: expected the end of the line; ESC G P takes x, y"},
        {"[normal macro 1 a]\n#ZF a",
         "k.kit:2:5: error: 'a' is a normal macro, and font is a font"},
        {"[touch macro 1 a]\n#GP a,1",
         "k.kit:2:5: error: 'a' is a touch macro, and x is a plain number"},
        {"[normal macro 1]\n#ZL 1,2",
         "k.kit:2:8: error: the rest is missing; ESC Z L takes x, y, a text"},
        {"[normal macro 1]\n#ZL 1,2,\"a", "k.kit:2:9: error: the text lacks its closing quote"},
        {"[normal macro 1]\n#ZL 1,2,\"a\\n\"",
         "k.kit:2:9: error: the text ends at its first zero, line feed or return; leave that out"},
        {"[normal macro 1]\n#ZL 1,2,\"ä日\"",
         "k.kit:2:11: error: the module's code page has no '日'"},
        {"[normal macro 1]\n#ZL 1,2,\"a\xFF\"", "k.kit:2:11: error: the text is no UTF-8 here"},
        {"[normal macro 1]\ntext \"a\\q\"",
         "k.kit:2:8: error: behind \\ comes one of \\ \" n r t e | ~ @ or x and two digits"},
        {"[normal macro 1]\nbytes 1B 2",
         "k.kit:2:10: error: '2' is neither pairs of hexadecimal digits nor a text in double "
         "quotes"},
        {"[normal macro 1]\n#UL 1,2,08 02 FF",
         "k.kit:2:9: error: these are 3 bytes, and a picture of that width and height takes 4"},
        {"[normal macro 1]\n#UL 1,2,picture 7", "k.kit:2:9: error: there is no picture 7"},
        {"[normal macro 1]\n#&E 1,2,X", "k.kit:2:9: error: expected R, C or J"},
        {"[normal macro 1]\nfile = a", "k.kit:2:1: error: 'file' is no setting here; expected at "
                                       "or same"},
        // Fonts
        {"[font 1 a]\n", "k.kit:1:2: error: expected file = NAME below"},
        {"[font 1]\nfile = none.ttf", "k.kit:2:8: error: 'none.ttf' can't be read: no such file"},
        {"[font 1]\nfile = text.txt\nsize = 9", "k.kit:2:8: error: 'text.txt' is neither a BDF nor "
                                                "a TrueType nor an OpenType font"},
        {"[font 1]\nfile = text.txt", "k.kit:2:8: error: expected size = DOTS for this font too"},
        {"[font 1]\nfile = short.fh7", "k.kit:2:8: error: 'short.fh7' is a damaged font"},
        {"[font 1]\nrange = 9..3", "k.kit:2:9: error: the range ends before it begins"},
        {"[font 1]\nfile = a.bdf\nchars = \"AB\"",
         "k.kit:2:8: error: 'a.bdf' has no character \"B\""},
        // Pictures
        {"[picture 1]\nfile = text.txt",
         "k.kit:2:8: error: 'text.txt' is neither a PNG nor a BMP nor a PBM"},
        {"[picture 1]\nfile = wide.pbm", "k.kit:2:8: error: 'wide.pbm' is 300 x 1 dots; at most "
                                         "255 x 128 fit, take a part"},
        {"[picture 1]\nfile = huge.pbm", "k.kit:2:8: error: 'huge.pbm' is 10000 x 10000 dots; a "
                                         "picture has 1 to 1048576"},
        {"[picture 1]\nfile = ok.pbm\npart = 1,0,2,2", "k.kit:3:8: error: the part reaches out of "
                                                       "the picture, which is 2 x 2 dots"},
        {"[picture 1]\nfile = ok.pbm\npart = 0,1,2,2", "k.kit:3:8: error: the part reaches out of "
                                                       "the picture, which is 2 x 2 dots"},
        {"[picture 1]\nfile = ok.pbm\nsecond = tall.pbm",
         "k.kit:3:10: error: 'tall.pbm' differs in size from the first image"},
        {"[picture 1]\nfile = tall.pbm\nsecond = tall.pbm",
         "k.kit:3:10: error: 'tall.pbm' has 100 rows; two images have at most 63 each"},
        // Places
        {"[menu macro 1]\nsame = menu macro 2\n#DL\n[menu macro 2]\n#DS",
         "k.kit:1:2: error: the macro has same, and commands beside it"},
        {"[picture 1]\nsame = picture 2", "k.kit:2:8: error: there is no such item here"},
        {"[picture 1]\nsame = picture 1", "k.kit:2:8: error: that is this item itself"},
        {"[picture 1]\nsame = normal macro 2\n[normal macro 2]\n#DL",
         "k.kit:2:8: error: normal macro 2 can't serve as a picture"},
        {"[menu macro 1]\nsame = menu macro 2\n[menu macro 2]\nsame = menu macro 1",
         "k.kit:1:2: error: shares the bytes of an item that has none of its own"},
        {"[menu macro 1]\nat = 16\n#DL",
         "k.kit:1:2: error: menu macro 1 lies in the tables, which end at 0x0E30"},
        {"[menu macro 1]\n#DL\n[menu macro 2]\nat = 0x0E32\n#DL",
         "k.kit:3:2: error: menu macro 2 at 0x0E32 overlaps menu macro 1, which ends at 0x0E33"},
        {"[bytes 0x7FFF]\n01 02", "k.kit:1:2: error: these bytes reach beyond the EEPROM"},
        {"[image]\nlength = 100", "k.kit: error: the image takes 3632 bytes, more than the wanted "
                                  "length of 100"},
        {"[image]\nlength = 32767",
         "k.kit: error: the image takes 32769 bytes with its CRC, and the EEPROM has 32768"},
    };
    for (const auto& [source, message] : cases) {
        build(source);
        const std::string_view first = std::string_view(messages).substr(0, messages.find('\n'));
        // Names of files in messages are quoted with their folder, and cut by it.
        EXPECT_EQ(first, message) << source;
    }
}

TEST_F(KitSource, tells_the_faults_of_several_lines) {
    build("[normal macro 1]\n#GX\n#DL\n#GP 1\n[font 0]\n");
    EXPECT_EQ(messages, "k.kit:5:7: error: the number is outside 1 to 15\n"
                        "k.kit:2:3: error: group G has the commands DPRVWZ\n"
                        "k.kit:4:6: error: expected a comma; ESC G P takes x, y\n");
}

TEST_F(KitSource, an_include_stands_for_its_lines_and_takes_paths_from_its_folder) {
    std::filesystem::create_directories(folder / "sub");
    put("sub/a.kit", "include b.txt\n[normal macro shared]\n#MN other\n");
    put("sub/b.txt", "[picture dot]\nfile = dot.pbm\n");
    put("sub/dot.pbm", "P1 1 1 1");
    const Built built = build("[normal macro other]\ninclude sub/a.kit\n#UI 1,2,dot\n");
    EXPECT_EQ(messages, "");
    EXPECT_EQ(item_bytes(built.kit, "shared"), bytes_from("#MN0;#UI1,2,0;"));
    EXPECT_EQ(item_bytes(built.kit, "dot"), (Bytes{1, 1, 0x80}));
}

TEST_F(KitSource, fonts_and_pictures_are_made_as_their_settings_say) {
    put("a.bdf", one_character);
    put("two.pbm", "P1 4 2 1001 0110");
    put("high.pbm", "P4 8 63 " + std::string(63, '\xAA'));
    const Built built =
        build("[font 1 face]\nfile = a.bdf\ngap = 3\nwidth = 9\nspacing = 2\n"
              "[font 2 format]\nfile = a.bdf\nformat = 0\n"
              "[picture right]\nfile = two.pbm\npart = 2,0,2,2\n"
              "[picture both]\nfile = two.pbm\npart = 0,0,2,2\nsecond_part = 2,0,2,2\n"
              "[picture dark]\nfile = two.pbm\ninvert = yes\n"
              "[picture high]\nfile = high.pbm\nsecond = high.pbm\n");
    EXPECT_EQ(messages, "");
    EXPECT_EQ(
        item_bytes(built.kit, "face"),
        (Bytes{'F', 'H', '7', 1, 'A', 'A', 9, 4, 19, 0, 3, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0x80, 0}));
    EXPECT_EQ(item_bytes(built.kit, "format")[3], 0);
    EXPECT_EQ(item_bytes(built.kit, "right"), (Bytes{2, 2, 0x40, 0x80}));
    EXPECT_EQ(item_bytes(built.kit, "both"), (Bytes{2, 0x84, 0x80, 0x40, 0x40, 0x80}));
    EXPECT_EQ(item_bytes(built.kit, "dark"), (Bytes{4, 2, 0x60, 0x90}));
    EXPECT_EQ(item_bytes(built.kit, "high").size(), 128U);
}

TEST_F(KitSource, numbers_what_has_none_and_adds_names_up) {
    const Built built =
        build("[constants]\nleft = 0X10\nback = -1 + 3\nwide = left + 5 - 1 ; a comment\n"
              "[touch macro go]\n#GP wide,left+left\n#GP $A,back\n"
              "[touch macro 0]\n#DL\n[touch macro again]\nESC MT go\n");
    EXPECT_EQ(messages, "");
    ASSERT_EQ(built.kit.items.size(), 3U);
    EXPECT_EQ(built.kit.items[0].number, 1);
    EXPECT_EQ(built.kit.items[2].number, 2);
    EXPECT_EQ(item_bytes(built.kit, "go"), bytes_from("#GP20,32;#GP10,2;"));
    EXPECT_EQ(item_bytes(built.kit, "again"), (Bytes{0x1B, 'M', 'T', 1}));
}

}  // namespace orvanel
