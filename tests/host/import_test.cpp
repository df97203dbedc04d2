// What becomes of the files that the user opens: pictures, pictures that the module can't show, and
// streams.

#include "base/bytes.h"
#include "firmware/raster/blit.h"
#include "host/import/picture_import.h"
#include "host/window/ground/boxes.h"
#include "link/feeds/feeds.h"
#include "link/ground/pipes.h"
#include "tests/support/fake_platform.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace orvanel {

namespace {

using Bytes = std::vector<std::uint8_t>;

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
          Case{"This is not a monochrome Picture !", with(with(bmp(8, 8), 28, 8), 2, 1)},
          Case{length, with(bmp(8, 8), 2, 1)}, Case{length, bmp(240, 200)},
          Case{length, {'B', 'M', 'x'}}, Case{big, bmp(241, 1)}, Case{big, bmp(8, 129)},
          Case{big, with(bmp(8, 8), 22, static_cast<std::uint32_t>(-8))},
          Case{"Only uncompressed Pictures are allowed !", with(bmp(8, 8), 30, 1)}}) {
        fresh_platform();
        EXPECT_EQ(picture_convert(file, 0, 0), 0);
        EXPECT_EQ(fake_platform.messages, std::vector<std::string>{message});
    }
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
    EXPECT_EQ(off_glass[3], 0);
    box_opened();
    drop_file(path, -1, -1);
    EXPECT_EQ(feed_left(), 0) << "a box is open";
    box_closed();
    EXPECT_EQ(feed_left(), 39);
}

}  // namespace orvanel
