// Where the bytes of an image were written: the map beside it, and what reads it.

#include "host/trace/source_map.h"
#include "tests/kit/kit_support.h"

#include <random>
#include <string>

namespace orvanel {
namespace {

struct KitMap : KitFolder {
    /// `LINE:COLUMN` of the byte in the k.kit of the folder, with the name of another file.
    std::string place(const SourceMap& map, int offset) {
        const SourceSpan* span = find_span(map, offset);
        if (span == nullptr) return "-";
        const std::string& file = map.files[static_cast<std::size_t>(span->file)];
        const std::string name = std::filesystem::path(file).filename().string();
        return (name == "k.kit" ? "" : name + ":") + std::to_string(span->line) + ":" +
               std::to_string(span->column + span->step * (offset - span->offset));
    }
};

TEST_F(KitMap, each_byte_has_the_place_where_it_was_written) {
    put("more.kit", "  ESC G D 0,0,top + 2,20\n");
    put("dot.pbm", "P1 1 1 1");
    const SourceMap map = build(R"([constants]
top = 8
[picture 7]
file = dot.pbm
[power-on macro 0]
#GP 10,top
text "äb\n|" 4142
include more.kit
#SB "xy" 0D
#ZL 1,2,"Hi"
[normal macro 1]
same = power-on macro 0
[bytes 0xE3D]
 FF 00
)")
                              .map;
    ASSERT_EQ(messages, "");
    struct Case {
        int offset;
        const char* place;
        const char* what;
    };
    for (const auto& [offset, wanted, what] : {
             Case{0x0000, "-", "the image's length"},
             Case{0x002E, "3:2", "the entry of the picture"},
             Case{0x0220, "5:2", "the record of the macro"},
             Case{0x0234, "11:2", "that of one that shares its bytes"},
             Case{0x0E30, "3:2", "the picture"},
             Case{0x0E33, "6:1", "# of a command"},
             Case{0x0E35, "6:1", "its second letter"},
             Case{0x0E36, "6:5", "its first number"},
             Case{0x0E39, "6:8", "its second, a name"},
             Case{0x0E3B, "7:7", "a letter of two bytes in the source"},
             Case{0x0E3C, "7:8", "the one after that"},
             Case{0x0E3D, "14:2", "what lies over a macro"},
             Case{0x0E3E, "14:5", "the second byte of that"},
             Case{0x0E3F, "7:14", "hexadecimal digits"},
             Case{0x0E40, "7:16", "the next pair of these"},
             Case{0x0E41, "more.kit:1:3", "ESC of an included file"},
             Case{0x0E46, "more.kit:1:15", "a sum there"},
             Case{0x0E4B, "9:5", "the count that is added to bytes"},
             Case{0x0E4D, "9:6", "the first of these"},
             Case{0x0E4F, "9:10", "the last of these"},
             Case{0x0E57, "10:10", "a text's first letter"},
             Case{0x0E58, "10:11", "its last one"},
             Case{0x0E5A, "-", "the CRC"},
         })
        EXPECT_EQ(place(map, offset), wanted) << what;
}

TEST_F(KitMap, a_file_gives_back_what_was_written) {
    put("dot.pbm", "P1 1 1 1");
    const Built built = build("; allow unreached\n[picture 7 lamp]\nfile = dot.pbm\n"
                              "[touch macro 65]\n; allow clamped\n#GD 0,0,255,9\n");
    ASSERT_EQ(messages, "");
    SourceMap read{};
    ASSERT_EQ(read_map(text_of(built.map), read), "");
    EXPECT_EQ(text_of(read), text_of(built.map));
    ASSERT_NE(find_item(read, Kind::picture, 7), nullptr);
    EXPECT_EQ(find_item(read, Kind::picture, 7)->name, "lamp");
    const std::string file = (folder / "k.kit").string();
    EXPECT_EQ(find_allow(read, "unreached", file, 2), 0);
    EXPECT_EQ(find_allow(read, "unreached", file, 3), 0) << "a line of the item";
    EXPECT_EQ(find_allow(read, "unreached", file, 4), -1) << "the next item";
    EXPECT_EQ(find_allow(read, "clamped", file, 6), 1);

    put("k.map", text_of(built.map));
    EXPECT_EQ(load_map((folder / "k.map").string(), built.image, read), "");
    Bytes changed = built.image;
    ++changed[0x4000];
    EXPECT_EQ(load_map((folder / "k.map").string(), changed, read),
              "is the map of another image: build image and map in one run");
}

TEST_F(KitMap, a_file_that_is_none_says_why) {
    const std::string head = "orvanel42-map 1\n", image = head + "image 32768 00000000\n";
    struct Case {
        std::string text, fault;
    };
    for (const auto& [text, fault] : {
             Case{"", "is no map of an image: it doesn't begin with 'orvanel42-map 1'"},
             Case{head, "has no line 'image'"},
             Case{head + "image 99 0\n", "line 2: 99 is outside 32768 to 65536"},
             Case{image + "from 8000 -\n", "line 3: the offset is outside the image"},
             Case{image + "from 10 -\nfrom 10 -\n",
                  "line 4: the offset isn't above the one before"},
             Case{image + "from 10 0 1 1 0\n", "line 3: no line 'file' stands before it"},
             Case{image + "file \"a\"\nfrom 10 1 1 1 0\n", "line 4: 1 is outside 0 to 0"},
             Case{image + "file \"a\"\nfrom 10 0 1 1\n", "line 4: a number is missing, 0 to 2"},
             Case{image + "lines 0 1 1\n", "line 3: there is no allow before it"},
             Case{image + "item lamp 1\n", "line 3: 'lamp' is no kind of item"},
             Case{image + image, "line 3: 'orvanel42-map' begins no line of a map"},
         }) {
        SourceMap map{};
        EXPECT_EQ(read_map(text, map), fault) << text;
    }
}

TEST_F(KitMap, a_flood_of_comments_is_refused_in_time) {
    std::string flood;
    for (int i = 0; i < 200'000; ++i)
        flood += "; allow clamped\n";
    build(flood + "[normal macro 1]\n#DL\n");
    EXPECT_EQ(messages, "k.kit:1001: error: more than 1000 comments allow something\n");
}

/// What is read holds what its readers lean on, whatever the text was.
TEST_F(KitMap, hostile_bytes_are_read_or_refused) {
    put("dot.pbm", "P1 1 1 1");
    const std::string whole = text_of(build("[picture 7 lamp]\nfile = dot.pbm\n; allow clamped\n"
                                            "[touch macro 65]\ntext \"abc\"\n")
                                          .map);
    std::minstd_rand random(1);
    for (int i = 0; i < 3000; ++i) {
        std::string text = whole;
        if (i % 7 == 0) text.resize(random() % whole.size());
        for (int change = 0; change < 3 && !text.empty(); ++change)
            text[random() % text.size()] = "0 9-\n\"F\xFF"[random() % 8];
        SourceMap map{};
        if (!read_map(text, map).empty()) continue;
        for (int offset = 0; offset < map.size; offset += 0x123) {
            const SourceSpan* span = find_span(map, offset);
            ASSERT_TRUE(span == nullptr || static_cast<std::size_t>(span->file) < map.files.size())
                << text;
        }
        find_allow(map, "clamped", "k.kit", 4);
        SourceMap again{};
        ASSERT_EQ(read_map(text_of(map), again), "") << text;
    }
}

}  // namespace
}  // namespace orvanel
