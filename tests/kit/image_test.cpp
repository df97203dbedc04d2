// The image and its stream: layout, CRC, filler, and the module that takes them.

#include "firmware/store/ground/eeprom.h"
#include "kit/check.h"
#include "kit/diff.h"
#include "kit/dump.h"
#include "kit/image.h"
#include "kit/objects.h"
#include "kit/stream.h"
#include "tests/kit/kit_support.h"
#include "tests/support/module.h"

#include <algorithm>
#include <array>
#include <random>
#include <string>

namespace orvanel {

namespace {

class KitImage : public KitFolder {
  protected:
    /// The image that is built from the dump of another one.
    Bytes build_dump(const Bytes& image) {
        const std::vector<DumpFile> files = dump_of(image, "k");
        for (const DumpFile& file : files)
            put(file.name, file.content);
        return build(std::string(files[0].content.begin(), files[0].content.end())).image;
    }

    std::string random_pictures(std::mt19937& random) const {
        std::string source;
        const auto count = random() % 6;
        for (unsigned i = 0; i < count; ++i) {
            const std::string name = "p" + std::to_string(i);
            const auto width = 1 + random() % 40, height = 1 + random() % 40;
            std::string file = "P1 " + std::to_string(width) + " " + std::to_string(height) + " ";
            for (unsigned k = 0; k < width * height; ++k)
                file += random() % 2 == 0 ? '0' : '1';
            put(name + ".pbm", file);
            source.append("[picture ").append(name).append("]\nfile = ").append(name);
            source.append(".pbm\n");
            if (random() % 2 == 0)
                source.append("second = ").append(name).append(".pbm\ndither = yes\n");
        }
        return source;
    }

    static std::string random_macros(std::mt19937& random) {
        const auto below = [&](unsigned n) { return std::to_string(random() % n); };
        std::string source;
        for (int i = 0; i < 4; ++i) {
            constexpr std::array kinds{"power-on", "normal", "touch", "menu"};
            source.append("[").append(kinds[random() % 4]).append(" macro]\n");
            if (random() % 3 == 0)
                source += "#ZL " + below(240) + "," + below(128) + ",\"Größe " + below(9) + "\"\n";
            if (random() % 3 == 0) source += "ESC GD " + below(256) + ",1,2," + below(256) + "\n";
            if (random() % 3 == 0) source += random() % 2 == 0 ? "bytes 1B 5A\n" : "bytes 1B4C\n";
            if (random() % 3 == 0) source += "text \"a\\r\\n\" 00 FF\n";
        }
        return source;
    }
};

std::string joined(const std::vector<ImageFinding>& findings) {
    std::string text;
    for (const ImageFinding& found : findings)
        text += found.finding.words + '\n';
    return text;
}

Bytes stream_from(const Kit& kit, const Bytes& image, std::string& fault) {
    Faults faults;
    Bytes stream = stream_of(kit, image, faults);
    fault = faults.empty() ? "" : faults[0].what();
    return stream;
}

}  // namespace

TEST_F(KitImage, lays_items_out_in_the_order_of_the_source) {
    put("dot.pbm", "P1 1 1 1");
    const Bytes image =
        build("[touch macro 2]\n#DL\n[picture 255]\nfile = dot.pbm\n"
              "[power-on macro 3]\nsame = touch macro 2\n"
              "[menu macro 255]\nat = 0x0E40\n#DS\n[normal macro 0]\n[normal macro 1]\n#DI\n")
            .image;
    ASSERT_EQ(messages, "");
    EXPECT_EQ(listing_of(image), "32768 bytes, length 0x0E46, CRC " + hex4(pair_at(image, 0x0E46)) +
                                     "\n"
                                     "picture 255       0x0E33  3 bytes      1 x 1\n"
                                     "power-on macro 3  0x0E30  3 bytes\n    #DL\n"
                                     "normal macro 1    0x0E43  3 bytes\n    #DI\n"
                                     "touch macro 2     0x0E30  3 bytes\n    #DL\n"
                                     "menu macro 255    0x0E40  3 bytes\n    #DS\n");
    EXPECT_EQ(joined(findings_of(image)), "");
}

TEST_F(KitImage, length_crc_and_stream_length_are_met_by_filler) {
    EXPECT_EQ(crc_of(bytes_from("123456789")), 0x31C3);
    const std::string_view source = "[stream before]\ntext \"hello\"\n[normal macro 0]\n#DL\n";
    const Built built = build(source, {0x780D, 0xF59F, 32454});
    ASSERT_EQ(messages, "");
    EXPECT_EQ(summary_of(built.image), "32768 bytes, length 0x780D, CRC 0xF59F");
    std::string fault;
    const Bytes stream = stream_from(built.kit, built.image, fault);
    EXPECT_EQ(fault, "");
    EXPECT_EQ(stream.size(), 32454U);
    EXPECT_EQ(image_from_stream(stream, eeprom_small), built.image);
    EXPECT_EQ(build("", {32766, -1, -1}).image.size(), 32768U) << messages;
    // The CRC alone: two bytes after the last item.
    EXPECT_EQ(summary_of(build(source, {-1, 0, -1}).image),
              "32768 bytes, length 0x0E35, CRC 0x0000");
    // A stream can grow by any number of bytes but one.
    Kit kit = built.kit;
    kit.stream.length = -1;
    const auto size = static_cast<int>(stream_from(kit, built.image, fault).size());
    for (const auto& [more, good] :
         {std::pair{-1, false}, {0, true}, {1, false}, {2, true}, {3, true}}) {
        kit.stream.length = size + more;
        EXPECT_EQ(std::ssize(stream_from(kit, built.image, fault)) == size + more, good) << more;
        EXPECT_EQ(fault.empty(), good) << more;
    }
}

TEST_F(KitImage, its_stream_programs_the_module_and_moves_with_the_blocks) {
    const Built built = build("[stream]\nblock = 1000\n"
                              "[stream before]\n#SB \"<\"\n"
                              "[stream after-block]\n#MS block-block\n#GP blocks,percent\n"
                              "[stream behind]\n#SB \">\"\n"
                              "[normal macro 0]\n#SB \"never\"\n[power-on macro 0]\n#DL\n");
    ASSERT_EQ(messages, "");
    std::string fault;
    const Bytes stream = stream_from(built.kit, built.image, fault);
    const std::string text(stream.begin(), stream.end());
    EXPECT_TRUE(text.starts_with("#SB1,<\x1B&E"));
    EXPECT_NE(text.find("#MS0;#GP4,25;\x1B&E"), std::string::npos);
    EXPECT_NE(text.find("#MS0;#GP4,100;#SB1,>\x1B&E"), std::string::npos);
    fresh_module();
    run_stream(stream);
    EXPECT_TRUE(std::equal(built.image.begin(), built.image.end(), eeprom_image.begin()));
    EXPECT_EQ(eeprom_state, EepromState::programmed);

    // Without a restart; and a command that erases, as the module carries it out.
    const Built open = build("[stream]\nrestart = no\n[stream behind]\n#&E 0x0E31,2,C\n"
                             "[normal macro 0]\n#SB \"never\"\n");
    const Bytes erasing = stream_from(open.kit, open.image, fault);
    EXPECT_EQ(erasing.back(), 'C');
    fresh_module();
    run_stream(erasing);
    const Bytes erased = image_from_stream(erasing, eeprom_small);
    EXPECT_NE(erased, open.image);
    EXPECT_TRUE(std::equal(erased.begin(), erased.end(), eeprom_image.begin()));
}

TEST_F(KitImage, check_tells_what_is_wrong) {
    const Built sound = build("[normal macro 1]\n#MN 2\n#DL\n[normal macro 2]\n#MT 3\n"
                              "[touch macro 3]\nESC MN 1\n[normal macro 4]\nESC MN 4\n"
                              "[normal macro 5]\n#MA 5,5,1\n");
    EXPECT_EQ(joined(findings_of(sound.image)),
              "normal macro 1 starts itself, by way of normal macro 2, touch macro 3\n"
              "normal macro 4 starts itself\n");
    EXPECT_EQ(joined(findings_of(Bytes(32768, 0xFF))),
              "the image is not programmed: its length is 0xFFFF\n");
    const Bytes damaged = build("[normal macro 1]\n#DL\n[bytes 0x002]\n00 00 30 0E 31 0E\n"
                                "[bytes 0x020]\nFF 7F 30 0E 00 70\n"
                                "[bytes 0x230]\n31 0E 09 00 30 0E 02 00 FE 7F 02 00 FE 7F 03 00\n"
                                "[bytes 0xE33]\n12 34\n[bytes 0x7000]\n01 83\n")
                              .image;
    EXPECT_EQ(joined(findings_of(damaged)),
              "the CRC is 0x3412 and should be " + hex4(crc_of(std::span(damaged).first(0xE33))) +
                  "\n"
                  "font 1 is unusable: there is no font at 0x0000\n"
                  "font 2 is unusable: there is no font at 0x0E30\n"
                  "font 3 is unusable: there is no font at 0x0E31\n"
                  "picture 0 is unusable: it ends beyond the image, at 0x8001\n"
                  "picture 1 ends at 0x0F86, behind the length that the CRC covers\n"
                  "picture 2 is unusable: its two images share 3 rows, an odd number\n"
                  "normal macro 0 ends at 0x0E3A, behind the length that the CRC covers\n"
                  "normal macro 2 ends at 0x8000, behind the length that the CRC covers\n"
                  "normal macro 3 is unusable: it ends beyond the image, at 0x8001\n"
                  "picture 1 at 0x0E30 overlaps normal macro 1, which ends at 0x0E32\n"
                  "normal macro 0 at 0x0E31 overlaps picture 1, which ends at 0x0F86\n"
                  "the CRC at 0x0E33 overlaps picture 1, which ends at 0x0F86\n");
    EXPECT_EQ(joined(findings_of(build("[bytes 0]\nFF 7F\n").image)),
              "the image is overfull: its length and CRC end at 32769, and the EEPROM has 32768 "
              "bytes\n");
}

TEST_F(KitImage, diff_tells_in_the_words_of_a_listing) {
    const Bytes before = build("[normal macro 1]\n#DL\n#GP 1,2\n#DS\n[touch macro 2]\n#DL\n").image;
    put("two.pbm", "P1 4 2 1001 0110");
    const Bytes after = build("[normal macro 1]\n#DL\n#GP 1,20\n#DS\n[touch macro 2]\n#DL\n"
                              "[menu macro 3]\n#DI\n[bytes 0x7000]\n01 02\n"
                              "[picture 7]\nfile = two.pbm\nsecond = two.pbm\n")
                            .image;
    EXPECT_EQ(difference_of(before, before), "");
    EXPECT_EQ(difference_of(before, after), "- " + summary_of(before) + "\n+ " + summary_of(after) +
                                                "\n"
                                                "+ picture 7: 6 bytes, two images of 4 x 2\n"
                                                "normal macro 1 differs\n"
                                                "    - #GP 1,2\n"
                                                "    + #GP 1,20\n"
                                                "touch macro 2 has moved from 0x0E3D to 0x0E3E\n"
                                                "+ menu macro 3: 3 bytes\n"
                                                "bytes 0x7000 to 0x7001 differ\n");
}

// Any image comes back from its dump: sound ones, damaged ones, and bytes without sense.
TEST_F(KitImage, a_dump_builds_the_same_image_again) {
    Faults faults;
    const Bytes device = build_kit(
                             ORVANEL_SOURCE_DIR "/examples/device.kit", {-1, -1, -1},
                             [](const std::string&) {}, faults)
                             .image;
    ASSERT_TRUE(faults.empty());
    std::vector<Bytes> images{device, Bytes(65536, 0xFF), Bytes(32768, 0x00)};
    std::mt19937 random(9);
    for (int round = 0; round < 12; ++round) {
        Bytes image = device;
        for (unsigned i = 0; i < random() % 40; ++i)
            image[random() % (round % 2 == 0 ? unsigned{data_start} : 0x4000U)] =
                static_cast<std::uint8_t>(random());
        images.push_back(image);
    }
    Bytes noise(32768);
    for (std::uint8_t& byte : noise)
        byte = static_cast<std::uint8_t>(random());
    images.push_back(noise);
    for (const Bytes& image : images) {
        const Bytes again = build_dump(image);
        ASSERT_EQ(messages, "");
        ASSERT_EQ(difference_of(image, again), "");
        ASSERT_EQ(again, image);
    }
    // Of a sound image nothing is left to bare bytes.
    const Bytes source = dump_of(device, "k")[0].content;
    EXPECT_EQ(std::string(source.begin(), source.end()).find("[bytes"), std::string::npos);
}

// Whoever changes what a dump wrote gets a sound image, of the CRC that the first one was brought
// to.
TEST_F(KitImage, a_dump_can_be_changed) {
    put("a.pbm", "P1 8 1 10101010");
    const std::string source = "[picture 0]\nfile = a.pbm\n[normal macro 1]\n#DL\n";
    for (const BuildOptions options :
         {BuildOptions{-1, -1, -1}, {-1, 0x1234, -1}, {0x4000, -1, -1}, {0x4000, 0x1234, -1}}) {
        const Built built = build(source, options);
        const std::vector<DumpFile> files = dump_of(built.image, "k");
        for (const DumpFile& file : files)
            put(file.name, file.content);
        const std::string dumped(files[0].content.begin(), files[0].content.end());
        put("picture-00.png", "P1 24 1 111100001111000011110000");
        const Bytes changed = build(dumped).image;
        ASSERT_EQ(messages, "") << dumped;
        EXPECT_EQ(joined(findings_of(changed)), "") << dumped;
        EXPECT_NE(changed, built.image);
        const int length = pair_at(changed, 0);
        EXPECT_EQ(length, options.length < 0 ? pair_at(built.image, 0) + 2 : options.length);
        EXPECT_TRUE(options.crc < 0 || pair_at(changed, length) == options.crc) << dumped;
    }
    // Bytes of somebody's own in front of the CRC stay what they are.
    const Built own = build(source + "[bytes 0x3FFC]\n01 02 03 04\n", {0x4000, -1, -1});
    EXPECT_EQ(build_dump(own.image), own.image);
    put("picture-00.png", "P1 24 1 111100001111000011110000");
    const std::vector<DumpFile> files = dump_of(own.image, "k");
    const Bytes changed =
        build(std::string(files[0].content.begin(), files[0].content.end())).image;
    EXPECT_EQ(pair_at(changed, 0x3FFE), 0x0403);
    EXPECT_EQ(joined(findings_of(changed)), "");
}

// Random kits, through the image, its dump and its stream.
TEST_F(KitImage, random_kits_come_back_whole) {
    std::mt19937 random(12);
    Bytes streams;  // one after the other, as a device programs its module again
    for (int round = 0; round < 15; ++round) {
        const std::string source = random_pictures(random) + random_macros(random);
        const BuildOptions options{random() % 2 == 0 ? -1 : 0x4000, random() % 2 == 0 ? -1 : 0x1234,
                                   -1};
        const Built built = build(source, options);
        ASSERT_EQ(messages, "") << source;
        std::string fault;
        const Bytes stream = stream_from(built.kit, built.image, fault);
        streams.insert(streams.end(), stream.begin(), stream.end());
        EXPECT_EQ(image_from_stream(streams, eeprom_small), built.image);
        EXPECT_EQ(build_dump(built.image), built.image);
        EXPECT_EQ(messages, "");
    }
}

}  // namespace orvanel
