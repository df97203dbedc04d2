// Pictures out of files, as dots.

#include "kit/dots.h"
#include "tests/kit/kit_support.h"

#include <string>

namespace orvanel {

namespace {

const char* const shape = "#.#......#\n"
                          ".#.......#\n"
                          "##########";

/// The dots of a file; a fault is a failure of the test.
Dots decoded(const Bytes& file) {
    GrayPicture picture;
    EXPECT_EQ(decode_picture(file, picture), "");
    return by_threshold(picture, 50);
}

std::string fault_of(const Bytes& file) {
    GrayPicture picture;
    return decode_picture(file, picture);
}

void append_little(Bytes& bytes, std::int64_t value, int count) {
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i & 0xFF));
}

/// A BMP of the shape. `set_light` is the gray of the colour that the set bits have.
Bytes bmp_of(const Dots& dots, bool upward, int set_light, int depth = 1) {
    Bytes file = bytes_from("BM");
    append_little(file, 0, 8);
    append_little(file, 62, 4);
    append_little(file, 40, 4);
    append_little(file, dots.width, 4);
    append_little(file, upward ? dots.height : -dots.height, 4);
    append_little(file, 1, 2);
    append_little(file, depth, 2);
    file.resize(54);
    append_little(file, (255 - set_light) * 0x010101, 4);
    append_little(file, set_light * 0x010101, 4);
    for (int i = 0; i < dots.height; ++i) {
        const int y = upward ? dots.height - 1 - i : i;
        for (int x = 0; x < 32; x += 8) {
            int byte = 0;
            for (int bit = 0; bit < 8; ++bit)
                byte = byte << 1 | (dot_at(dots, x + bit, y) ? 1 : 0);
            file.push_back(static_cast<std::uint8_t>(byte));
        }
    }
    return file;
}

/// The same with the head of old, whose sizes have 16 bits and whose colours have 3 bytes.
Bytes old_bmp_of(const Dots& dots) {
    const Bytes usual = bmp_of(dots, true, 0);
    Bytes file = bytes_from("BM");
    append_little(file, 0, 8);
    append_little(file, 32, 4);
    append_little(file, 12, 4);
    append_little(file, dots.width, 2);
    append_little(file, dots.height, 2);
    append_little(file, 1, 2);
    append_little(file, 1, 2);
    append_little(file, 0xFFFFFF, 3);
    append_little(file, 0, 3);
    file.insert(file.end(), usual.begin() + 62, usual.end());
    return file;
}

}  // namespace

TEST(KitPicture, is_the_same_out_of_every_kind_of_file) {
    const Dots dots = dots_from(shape);
    const std::string wanted = dots_text(dots);
    EXPECT_EQ(dots_text(decoded(encode_png(gray_of(dots)))), wanted);
    for (const bool upward : {true, false}) {
        EXPECT_EQ(dots_text(decoded(bmp_of(dots, upward, 0))), wanted);
        Dots inverse = dots;
        for (std::uint8_t& byte : inverse.rows)
            byte = static_cast<std::uint8_t>(~byte);
        EXPECT_EQ(dots_text(decoded(bmp_of(inverse, upward, 255))), wanted);
    }
    EXPECT_EQ(dots_text(decoded(old_bmp_of(dots))), wanted);
    EXPECT_EQ(dots_text(decoded(bytes_from("P1\n# so\n10 3\n1 010000001 0100000001\n1111111111"))),
              wanted);
    Bytes binary = bytes_from("P4 10 3\n");
    binary.insert(binary.end(), dots.rows.begin(), dots.rows.end());
    EXPECT_EQ(dots_text(decoded(binary)), wanted);
}

TEST(KitPicture, takes_a_colour_for_as_light_as_the_eye_does_and_what_is_clear_for_white) {
    const Dots dots = dots_from("#.\n");
    Bytes bmp = bmp_of(dots, true, 0);
    for (const auto& [at, byte] : {std::pair{54, 0}, {55, 255}, {56, 0}, {60, 255}})
        bmp[static_cast<std::size_t>(at)] = static_cast<std::uint8_t>(byte);
    EXPECT_EQ(dots_text(decoded(bmp)), "\n#.\n") << "red is dark, green is light";
    // Black, once clear and once not.
    EXPECT_EQ(dots_text(decoded(Bytes{0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00,
                                      0x00, 0x0D, 0x49, 0x48, 0x44, 0x52, 0x00, 0x00, 0x00, 0x02,
                                      0x00, 0x00, 0x00, 0x01, 0x08, 0x06, 0x00, 0x00, 0x00, 0xF4,
                                      0x22, 0x7F, 0x8A, 0x00, 0x00, 0x00, 0x0C, 0x49, 0x44, 0x41,
                                      0x54, 0x78, 0x9C, 0x63, 0x60, 0x80, 0x80, 0xFF, 0x00, 0x01,
                                      0x08, 0x01, 0x00, 0x4D, 0x19, 0x8F, 0x39, 0x00, 0x00, 0x00,
                                      0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82})),
              "\n.#\n");
}

TEST(KitPicture, refuses_what_is_damaged_or_too_large_without_taking_memory) {
    const Dots dots = dots_from(shape);
    Bytes png = encode_png(gray_of(dots));
    // Width and height stand after the head of the first chunk, and a check of the chunk after.
    Bytes huge = png;
    huge[18] = huge[22] = 0x27;
    EXPECT_NE(fault_of(huge), "");
    png.resize(png.size() / 2);
    EXPECT_NE(fault_of(png), "");
    Bytes bmp = bmp_of(dots, true, 0);
    bmp.pop_back();
    EXPECT_EQ(fault_of(bmp), "is cut short");
    EXPECT_EQ(fault_of(bmp_of(dots, true, 0, 24)),
              "is a BMP with 24 bits a dot; 1 can be read, or a PNG");
    EXPECT_EQ(fault_of(bytes_from("P4 10000 10000\n")),
              "is 10000 x 10000 dots; a picture has 1 to 1048576");
    EXPECT_EQ(fault_of(bytes_from("P4 0 5\n")), "is 0 x 5 dots; a picture has 1 to 1048576");
    EXPECT_EQ(fault_of(bytes_from("P1 2 2 1 0 1")), "is cut short");
    EXPECT_EQ(fault_of(bytes_from("P1 2 2 1 0 1 x")), "has a dot that is neither 0 nor 1");
    EXPECT_EQ(fault_of({}), "is neither a PNG nor a BMP nor a PBM");
}

TEST(KitPicture, threshold_counts_percent_of_white) {
    const GrayPicture steps{4, 1, {0, 76, 77, 255}};
    EXPECT_EQ(dots_text(by_threshold(steps, 30)), "\n##..\n");
    EXPECT_EQ(dots_text(by_threshold(steps, 0)), "\n....\n");
    EXPECT_EQ(dots_text(by_threshold(steps, 100)), "\n###.\n");
}

TEST(KitPicture, dithering_sets_as_many_dots_as_the_gray_is_dark) {
    for (const int light : {0, 32, 64, 128, 191, 255}) {
        const GrayPicture even{16, 16, Bytes(256, static_cast<std::uint8_t>(light))};
        const Dots dots = by_dither(even);
        int set = 0;
        for (int i = 0; i < 256; ++i)
            set += dot_at(dots, i % 16, i / 16) ? 1 : 0;
        const int dark = 256 - light * 256 / 255;
        EXPECT_NEAR(set, dark, 4) << light;
    }
}

TEST(KitPicture, two_images_share_one_picture) {
    const Dots first = dots_from("#.\n.#"), second = dots_from(".#\n#.");
    const Bytes bytes = picture_bytes(first, &second);
    EXPECT_EQ(bytes, (Bytes{2, 0x84, 0x80, 0x40, 0x40, 0x80}));
    PictureView view{};
    std::size_t size = 0;
    ASSERT_TRUE(read_picture_bytes(bytes, view, size));
    EXPECT_EQ(dots_text(view.second), dots_text(second));
    EXPECT_FALSE(read_picture_bytes(Bytes{2, 1, 0xFF}, view, size)) << "spare bits are set";
    EXPECT_FALSE(read_picture_bytes(Bytes{2, 0x83, 0, 0, 0}, view, size)) << "an odd row";
}

}  // namespace orvanel
