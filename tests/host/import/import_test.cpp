// What becomes of the files that the user opens: pictures, pictures that the module can't show, and
// streams.

#include "base/bytes.h"
#include "firmware/raster/blit.h"
#include "firmware/store/ground/eeprom.h"
#include "host/import/file_kind.h"
#include "host/import/kit_file.h"
#include "host/import/picture_import.h"
#include "host/program/program_folder.h"
#include "host/skin/skin.h"
#include "host/skin/view.h"
#include "host/window/ground/boxes.h"
#include "link/feeds/feeds.h"
#include "link/ground/pipes.h"
#include "tests/support/fake_platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <png.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace orvanel {

namespace {

void put(Bytes& bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes[at + i] = low8(value >> 8 * i);
}

/// A BMP of clear bits: white with the palette that it has, so no dot is set.
Bytes bmp(int width, int height) {
    constexpr std::size_t heads = 62;
    Bytes file(heads + static_cast<std::size_t>((width + 31) / 32 * 4 * height));
    file[0] = 'B';
    file[1] = 'M';
    put(file, 2, static_cast<std::uint32_t>(file.size()));
    put(file, 10, heads);
    put(file, 18, static_cast<std::uint32_t>(width));
    put(file, 22, static_cast<std::uint32_t>(height));
    file[28] = 1;
    put(file, 54, 0xFFFFFF);
    return file;
}

Bytes raw(int width, int height) {
    Bytes file(static_cast<std::size_t>(2 + stride_of(width) * height), 0xA5);
    file[0] = low8(width);
    file[1] = low8(height);
    return file;
}

/// A PNG of these pixels, each a shade of gray and how much it covers.
Bytes png(int width, int height, Bytes pixels) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_GA;
    pixels.resize(PNG_IMAGE_SIZE(image), 0xFF);
    Bytes file(PNG_IMAGE_PNG_SIZE_MAX(image));
    png_alloc_size_t size = file.size();
    png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0, nullptr);
    file.resize(size);
    return file;
}

Bytes text(std::string_view characters) { return {characters.begin(), characters.end()}; }

/// The command that a file becomes, empty if it is none or refused.
Bytes command_of(const Bytes& file, int x = 0, int y = 0) {
    const int length = picture_convert(file, low8(x), low8(y));
    const auto command = picture_command().first(static_cast<std::size_t>(std::max(length, 0)));
    return {command.begin(), command.end()};
}

Bytes all_of_rx() {
    Bytes bytes;
    for (int byte = rx_pipe_get(); byte >= 0; byte = rx_pipe_get())
        bytes.push_back(low8(byte));
    return bytes;
}

class Import : public testing::Test {
  protected:
    std::filesystem::path folder =
        std::filesystem::path(testing::TempDir()) / ("import" + std::to_string(getpid()));

    void SetUp() override {
        fresh_platform();
        power_on_pipes();
        stop_feed();
        std::filesystem::create_directories(folder);
    }
    void TearDown() override {
        stop_feed();
        std::filesystem::remove_all(folder);
    }
    std::string file(const std::string& name, const Bytes& content) const {
        std::ofstream(folder / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(content.data()),
                   static_cast<std::streamsize>(content.size()));
        return folder / name;
    }
};

}  // namespace

TEST_F(Import, dark_pixels_become_set_dots_whichever_order_the_palette_has) {
    Bytes file = bmp(10, 2);
    file[62] = 0xC0;  // the bottom row: two pixels of colour 1
    file[66] = 0x80;  // the top row
    file[67] = 0x40;
    const Bytes head{0x1B, 'U', 'L', 3, 4, 10, 2};
    Bytes dark = head;
    for (const int byte : {0x80, 0x40, 0xC0, 0x00})
        dark.push_back(low8(byte));
    EXPECT_EQ(command_of(file, 3, 4), dark);
    put(file, 54, 0);
    put(file, 58, 0xFFFFFF);
    Bytes light = head;
    for (const int byte : {0x7F, 0x80, 0x3F, 0xC0})
        light.push_back(low8(byte));
    EXPECT_EQ(command_of(file, 3, 4), light);
    put(file, 54, 0xFFFFFF);
    EXPECT_EQ(command_of(file, 3, 4), light) << "equal colours: as with the first one dark";
    put(file, 54, 0xC80000);
    put(file, 58, 0x009600);
    EXPECT_EQ(command_of(file, 3, 4), dark) << "red counts as much as green";
}

TEST_F(Import, a_bmp_that_names_no_bits_has_rows_of_one_bit_a_dot) {
    Bytes file = bmp(40, 2);  // rows of 8 bytes
    file[28] = 0;
    file[62 + 4] = 0x80;
    file[70] = 0x01;
    EXPECT_EQ(command_of(file, 3, 4),
              (Bytes{0x1B, 'U', 'L', 3, 4, 40, 2, 0x01, 0, 0, 0, 0, 0, 0, 0, 0, 0x80}));
}

TEST_F(Import, pictures_keep_on_the_glass) {
    struct Case {
        Bytes file;
        int x, y;
        std::size_t length;
        int at_x, at_y;
    };
    for (const auto& [file, x, y, length, at_x, at_y] :
         {Case{bmp(240, 128), 10, 10, 3847, 0, 0}, Case{bmp(1, 1), 239, 127, 8, 239, 127},
          Case{bmp(1, 1), 240, 128, 8, 239, 127}, Case{raw(30, 20), 225, 110, 87, 210, 108},
          Case{raw(240, 128), 0, 0, 3847, 0, 0}}) {
        const Bytes command = command_of(file, x, y);
        ASSERT_EQ(command.size(), length);
        EXPECT_EQ(command[3], at_x);
        EXPECT_EQ(command[4], at_y);
    }
    Bytes both = raw(66, 77);
    both[0] = 'B';
    both[1] = 'M';
    EXPECT_EQ(both.size(), 695U);
    EXPECT_EQ(command_of(both).size(), 700U) << "the raw bitmap comes before the BMP";
}

TEST_F(Import, what_the_module_cannot_show_is_refused_with_the_first_fault_that_it_has) {
    struct Case {
        const char* message;
        Bytes file;
    };
    const auto with = [](Bytes file, std::size_t at, std::uint32_t value) {
        put(file, at, value);
        return file;
    };
    const char* big = "The Picture is to big (max. 240x128 dots) !";
    const char* length = "Picturefilelength is false!";
    for (const auto& [message, file] :
         {Case{big, raw(241, 1)}, Case{big, raw(8, 129)},
          Case{"This is not a monochrome Picture !", with(with(bmp(8, 8), 28, 2), 2, 1)},
          Case{length, with(bmp(8, 8), 2, 1)}, Case{length, bmp(240, 200)},
          Case{length, {'B', 'M', 'x'}}, Case{big, bmp(241, 1)}, Case{big, bmp(8, 129)},
          Case{big, with(bmp(8, 8), 22, static_cast<std::uint32_t>(-8))},
          Case{"Only uncompressed Pictures are allowed !", with(bmp(8, 8), 30, 1)}}) {
        fresh_platform();
        EXPECT_EQ(picture_convert(file, 0, 0), 0);
        EXPECT_EQ(fake_platform.messages, std::vector<std::string>{message});
    }
}

TEST_F(Import,
       a_png_is_dark_where_it_is_darker_than_middle_gray_and_clear_where_it_is_transparent) {
    const Bytes pixels{0,   255, 127, 255, 128, 255, 255, 255, 0,
                       127, 0,   128, 0,   0,   255, 255, 0,   255};
    EXPECT_EQ(command_of(png(9, 1, pixels), 3, 4),
              (Bytes{0x1B, 'U', 'L', 3, 4, 9, 1, 0b11000100, 0b10000000}));
    const Bytes whole = command_of(png(240, 128, {}), 10, 10);
    ASSERT_EQ(whole.size(), 3847U);
    EXPECT_EQ(whole[3], 0);
    // By its content, whatever it is called.
    open_feed(file("a.eep", png(1, 1, {0, 255})), 0, 0);
    EXPECT_EQ(feed_left(), 8);
    EXPECT_TRUE(fake_platform.messages.empty());
}

TEST_F(Import, a_png_that_cannot_be_shown_is_refused_and_feeds_nothing) {
    const char* big = "The Picture is to big (max. 240x128 dots) !";
    Bytes cut = png(16, 16, {});
    cut.resize(cut.size() / 2);
    for (const Bytes& content : {png(241, 1, {}), png(1, 129, {}), png(2000, 2000, {})}) {
        fresh_platform();
        open_feed(file("big.png", content), 0, 0);
        EXPECT_EQ(fake_platform.messages, std::vector<std::string>{big});
    }
    for (const Bytes& content : {cut, Bytes(cut.begin(), cut.begin() + 8)}) {
        fresh_platform();
        open_feed(file("cut.png", content), 0, 0);
        EXPECT_THAT(fake_platform.messages,
                    testing::ElementsAre(testing::StartsWith("This file is ")));
    }
    EXPECT_EQ(feed_left(), 0);
}

TEST_F(Import, a_kit_is_built_and_fed_and_the_former_image_kept_once) {
    ASSERT_EQ(open_program_folder(folder / "module"), "");
    const auto image = [this](const char* name) { return folder / "module" / name; };
    const auto write = [&](std::string_view content) {
        std::ofstream(image("Orvanel42.bin")) << content;
    };
    const auto backup = [&] {
        std::ifstream kept(image("Orvanel42.bin.bak"));
        return std::string(std::istreambuf_iterator<char>(kept), {});
    };
    const std::string path =
        file("page.KIT", text("; a page\n\n[normal macro 0]\nbytes \"hello\"\n"));
    stop_feed();
    open_feed(path, 0, 0);
    EXPECT_FALSE(std::filesystem::exists(image("Orvanel42.bin.bak"))) << "there was no image";
    Bytes stream;
    ASSERT_EQ(kit_stream(path, stream), "");
    EXPECT_EQ(feed_left(), std::ssize(stream));
    drain_feed();
    EXPECT_EQ(all_of_rx(), stream);
    ASSERT_EQ(open_program_folder(folder / "module"), "");
    for (const char* content : {"first", "second"}) {
        std::filesystem::remove(image("Orvanel42.bin"));
        write(content);
        open_feed(path, 0, 0);
        EXPECT_EQ(backup(), "first");
    }
    EXPECT_TRUE(fake_platform.messages.empty());
}

TEST_F(Import, a_kit_with_faults_tells_the_first_five_in_one_box_and_feeds_nothing) {
    std::string lines = "kit 1\n";
    for (int i = 0; i < 7; ++i)
        lines += "[picture " + std::to_string(i) + "]\nfile = none.png\n";
    const std::string path = file("faults.kit", text(lines));
    open_feed(path, 0, 0);
    EXPECT_EQ(feed_left(), 0);
    ASSERT_EQ(fake_platform.messages.size(), 1U);
    const std::string& box = fake_platform.messages.front();
    EXPECT_EQ(std::count(box.begin(), box.end(), '\n'), 5);
    EXPECT_THAT(box, testing::StartsWith("faults.kit:3:"));
    EXPECT_THAT(box, testing::HasSubstr("\nand 2 more"));
}

TEST_F(Import, a_file_is_what_its_name_and_its_first_line_say) {
    struct Case {
        const char *name, *content;
        FileKind kind;
    };
    for (const auto& [name, content, kind] :
         {Case{"a.kit", "kit 1\n", FileKind::kit},
          Case{"a.kit", "\xEF\xBB\xBF\r\n ; about\r\n\tinclude \"b.kit\"", FileKind::kit},
          Case{"a.kit", "#TA\n[image]\n", FileKind::other}, Case{"a.kit", "", FileKind::other},
          Case{".kit", "kit 1", FileKind::other}, Case{"a.eep", "kit 1\n", FileKind::other},
          Case{"a.Scn", "; what it plays\nscenario  1\nfeed x", FileKind::scenario},
          Case{"a.scn", "scenario 12\n", FileKind::other},
          Case{"a.scn", "feed x\n", FileKind::other},
          Case{"a.scn", "\xEF\xBB\xBFscenario 1\n", FileKind::scenario},
          Case{"a.txt", "scenario 1\n", FileKind::other}})
        EXPECT_EQ(file_kind(name, text(content)), kind) << name << ": " << content;
    std::string comments;
    while (comments.size() < 100'000)
        comments += "; of a licence, or what a program has drawn\n";
    EXPECT_EQ(kind_of_file(file("long.kit", text(comments + "kit 1\n"))), FileKind::kit);
    EXPECT_EQ(kind_of_file(file("long.scn", text(comments + "scenario 1\n"))), FileKind::scenario);
}

TEST_F(Import, what_is_meant_for_another_program_is_refused) {
    const std::string scenario = file("a.scn", text("scenario 1\nfeed x\n"));
    open_feed(scenario, 0, 0);
    EXPECT_EQ(feed_left(), 0);
    EXPECT_THAT(fake_platform.messages,
                testing::ElementsAre(testing::HasSubstr("orvanel42-headless")));
    EXPECT_THAT(not_an_image(scenario), testing::HasSubstr("a.scn is a scenario"));
    EXPECT_THAT(not_an_image(file("a.kit", text("[image]\n"))),
                testing::HasSubstr("orvanel42-kit"));
    for (const std::string& picture : {file("a.png", png(1, 1, {})), file("a.bmp", bmp(8, 3))}) {
        EXPECT_THAT(not_an_image(picture), testing::HasSubstr("is a picture"));
        EXPECT_THAT(not_a_kit(picture), testing::HasSubstr("is a picture"));
        EXPECT_THAT(not_a_scenario(picture), testing::HasSubstr("'open FILE'"));
    }
    EXPECT_THAT(not_a_kit(scenario), testing::HasSubstr("is a scenario"));
    EXPECT_THAT(not_a_scenario(file("a.kit", text("kit 1\n"))), testing::HasSubstr("--kit FILE"));
    const std::string erased = file("erased.bin", Bytes(65536, 0xFF));
    EXPECT_THAT(not_a_scenario(erased), testing::HasSubstr("--image FILE"));
    EXPECT_THAT(not_a_kit(erased), testing::HasSubstr("--image FILE"));
    EXPECT_EQ(not_a_scenario(scenario), "");
    EXPECT_EQ(not_a_scenario(file("b.scn", Bytes(32768, ' '))), "") << "a text";
    for (const std::string& image :
         {file("b.bin", Bytes(32768, 0xFF)), file("b.kit", Bytes{'F', 'H', '7'}), folder.string(),
          (folder / "none").string()})
        EXPECT_EQ(not_an_image(image), "") << image;
}

TEST_F(Import, bits_that_a_bmp_does_not_hold_are_clear_dots) {
    Bytes file = bmp(8, 3);
    std::fill(file.begin() + 62, file.end(), std::uint8_t{0xFF});
    file.resize(70);  // the two lower rows are there
    put(file, 2, 70);
    EXPECT_EQ(command_of(file), (Bytes{0x1B, 'U', 'L', 0, 0, 8, 3, 0x00, 0xFF, 0xFF}));
    for (const std::uint32_t rows_at : {70U, 0xFFFFFFFFU}) {
        put(file, 10, rows_at);
        EXPECT_EQ(command_of(file), (Bytes{0x1B, 'U', 'L', 0, 0, 8, 3, 0, 0, 0}));
    }
    EXPECT_TRUE(fake_platform.messages.empty());
}

TEST_F(Import, what_is_no_picture_is_fed_byte_for_byte) {
    Bytes stream(200'000, 'x');
    stream.back() = 'y';
    open_feed(file("a stream.eep", stream), 0, 0);
    EXPECT_EQ(feed_left(), 200'000);
    open_feed(file("one", {'z'}), 0, 0);
    drain_feed();
    EXPECT_EQ(all_of_rx(), Bytes{'z'});
    for (const char* name : {"'quoted'", "o'clock \n \xFC \"", "plain"}) {
        const std::string path = file(name, {'a', 'b', 'c'});
        open_feed('"' + path + '"', 0, 0);
        drain_feed();
        EXPECT_EQ(all_of_rx(), (Bytes{'a', 'b', 'c'})) << name;
    }
    std::filesystem::current_path(folder);
    open_feed("''quoted''", 0, 0);
    EXPECT_EQ(feed_left(), 3) << "one pair of quotes comes off, and no other";
}

TEST_F(Import, a_file_that_is_not_taken_leaves_the_running_feed_and_its_picture_alone) {
    const Bytes picture = raw(16, 16);
    open_feed(file("good.blh", picture), 0, 0);
    const int running = static_cast<int>(feed_left());
    ASSERT_EQ(mkfifo((folder / "fifo").c_str(), 0600), 0);
    for (const std::string& path :
         {file("bad.blh", raw(241, 1)), file("bad.bmp", bmp(241, 1)), (folder / "none").string(),
          folder.string(), (folder / "fifo").string(), std::string(300, 'n'), std::string()}) {
        open_feed(path, 0, 0);
        EXPECT_EQ(feed_left(), running) << path;
    }
    drain_feed();
    const Bytes fed = all_of_rx();
    EXPECT_TRUE(std::equal(picture.begin(), picture.end(), fed.begin() + 5, fed.end()));
    EXPECT_EQ(fake_platform.messages.size(), 2U);
}

TEST_F(Import, a_dropped_picture_lands_one_dot_off_and_waits_for_no_feed) {
    const std::string path = file("good.blh", raw(16, 16));
    drop_file(path, -1, -1);
    drop_file(path, 0, 0);
    drain_feed();
    const Bytes off_glass = all_of_rx();
    EXPECT_EQ(off_glass.size(), 39U) << "the second drop came while the first ran";
    EXPECT_EQ((std::vector<int>{off_glass[3], off_glass[4]}), (std::vector<int>{0, 0}));
    ASSERT_EQ(prepare_view(), "");
    choose_view();
    drop_file(path, lcd_dib.area.left + 30, lcd_dib.area.top + 20);
    drain_feed();
    const Bytes on_glass = all_of_rx();
    EXPECT_EQ((std::vector<int>{on_glass[3], on_glass[4]}), (std::vector<int>{31, 21}));
    box_opened();
    drop_file(path, -1, -1);
    EXPECT_EQ(feed_left(), 0) << "a box is open";
    box_closed();
    EXPECT_EQ(feed_left(), 39);
}

}  // namespace orvanel
