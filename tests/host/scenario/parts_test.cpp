// What scenario lines are made of, and what is told when an expectation fails.

#include "base/bytes.h"
#include "base/files.h"
#include "base/safe_file.h"
#include "base/words.h"
#include "host/scenario/answers.h"
#include "host/scenario/commands.h"
#include "host/scenario/comparison.h"
#include "host/scenario/junit.h"
#include "host/scenario/picture.h"
#include "link/ground/pipes.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

namespace {

using namespace std::string_view_literals;

Bytes bytes_of(std::string_view text) { return {text.begin(), text.end()}; }

/// A file in a folder of this process, gone with it.
struct TemporaryFile {
    std::string path;
    explicit TemporaryFile(const std::string& name)
        : path(testing::TempDir() + std::to_string(getpid()) + name) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() { std::filesystem::remove(path); }
};

BitPlane picture_with(std::initializer_list<std::pair<int, int>> dots) {
    BitPlane picture{};
    for (const auto& [x, y] : dots)
        plane_put(picture.data(), x, y, true);
    return picture;
}

}  // namespace

TEST(ScenarioBytes, hex_and_text_mix_in_any_order) {
    struct Case {
        std::string_view line;
        Bytes bytes;
        std::string_view left;
    };
    const std::vector<Case> cases{
        {"", {}, ""},
        {"1B4744 0a", {0x1B, 0x47, 0x44, 0x0A}, ""},
        {"1b\"GD\"0A\t\"\"", {0x1B, 'G', 'D', 0x0A}, ""},
        {R"("a\\b\"\n\r\t\e\xfF.")", bytes_of("a\\b\"\n\r\t\x1B\xFF."), ""},
        {"\"within\" within 7", bytes_of("within"), " within 7"},
        {"\"\xC3\xA4\"", {0xC3, 0xA4}, ""},
    };
    for (const Case& c : cases) {
        std::string_view rest = c.line;
        Bytes bytes;
        EXPECT_EQ(take_bytes(rest, bytes), "") << c.line;
        EXPECT_EQ(bytes, c.bytes) << c.line;
        EXPECT_EQ(rest, c.left) << c.line;
    }
}

TEST(ScenarioBytes, what_is_wrong_is_said) {
    struct Case {
        std::string_view line, fault;
    };
    for (const auto& [line, fault] :
         {Case{"1B 4", "'4' has an odd number of hexadecimal digits"},
          Case{"1B GD", "'GD' is neither hexadecimal nor text in double quotes"},
          Case{"\"abc", "the text lacks its closing quote"},
          Case{"\"abc\\", "the text lacks its closing quote"},
          Case{"\"\\x4\"", "\\x takes two hexadecimal digits"},
          Case{"\"\\q\"", "q is no escape behind \\"},
          Case{"\x07", "'\\x07' is neither hexadecimal nor text in double quotes"}}) {
        std::string_view rest = line;
        Bytes bytes;
        EXPECT_EQ(take_bytes(rest, bytes), fault);
    }
}

TEST(ScenarioWords, numbers_stay_in_their_range_and_paths_may_hold_blanks) {
    struct Case {
        std::string_view word;
        bool good;
    };
    for (const auto& [word, good] :
         {Case{"0", true}, Case{"3", true}, Case{"4", false}, Case{"-1", false}, Case{"", false},
          Case{"0x1", false}, Case{"99999999999999999999", false}}) {
        std::string_view rest = word;
        std::int64_t value = 0;
        EXPECT_EQ(take_number(rest, 0, 3, value).empty(), good) << word;
    }
    std::string_view rest = R"("a b\c.png" main)";
    std::string path;
    EXPECT_EQ(take_path(rest, path), "");
    EXPECT_EQ(path, R"(a b\c.png)");
    EXPECT_EQ(take_word(rest), "main");
}

TEST(ScenarioCommands, the_page_lists_those_of_this_version) {
    std::vector<std::uint8_t> content;
    ASSERT_EQ(read_file(ORVANEL_SOURCE_DIR "/docs/reference/scenarios.md", 100'000, content), "");
    const std::string page(content.begin(), content.end());
    for (const ScenarioCommand& command : scenario_commands()) {
        const std::string name = "| `" + std::string(command.name);
        const bool listed = page.find(name + "`") != std::string::npos ||
                            page.find(name + " ") != std::string::npos;
        // `scenario` is no command to its user, but a mark at the top.
        EXPECT_EQ(listed, command.name != "scenario") << command.name;
    }
}

TEST(Picture, comes_back_from_both_kinds_of_file) {
    const BitPlane picture = picture_with({{0, 0}, {239, 0}, {13, 64}, {0, 127}, {239, 127}});
    for (const char* ending : {".png", ".PBM"}) {
        const TemporaryFile file(ending);
        ASSERT_EQ(write_picture(file.path, picture), "");
        BitPlane read{};
        EXPECT_EQ(read_picture(file.path, read), "");
        EXPECT_EQ(read, picture) << ending;
    }
}

TEST(Picture, a_damaged_or_foreign_file_is_refused_with_its_reason) {
    const std::string rows(3840, '\x55');
    struct Case {
        const char* ending;
        std::string content, fault;
    };
    Bytes png;
    const TemporaryFile good(".png");
    ASSERT_EQ(write_picture(good.path, {}), "");
    ASSERT_EQ(read_file(good.path, 10000, png), "");
    const std::string half(png.begin(), png.begin() + 70);
    for (const auto& [ending, content, fault] :
         {Case{".pbm", "P4 # a comment\n#another\n240\t128\n" + rows, ""},
          Case{".pbm", "P4\n240 128\n" + rows.substr(1), "holds 3839 bytes of dots, not 3840"},
          Case{".pbm", "P4\n240 128\n" + rows + "x", "holds 3841 bytes of dots, not 3840"},
          Case{".pbm", "P4\n240 128", "holds 0 bytes of dots, not 3840"},
          Case{".pbm", "P4\n128 240\n" + rows, "is 128 x 240 dots, not 240 x 128"},
          Case{".pbm", "P4\n99999999999999999999 128\n", "is 1000000 x 128 dots, not 240 x 128"},
          Case{".pbm", "P4 # no end", "has a damaged head"},
          Case{".pbm", "P1\n240 128\n", "is no binary PBM (P4)"},
          Case{".png", "P4\n240 128\n" + rows, "is no readable PNG"},
          Case{".png", half, "is damaged"}, Case{".png", "", "is no readable PNG"}}) {
        const TemporaryFile file(ending);
        ASSERT_EQ(replace_file(file.path, bytes_of(content), Backup::none), "");
        BitPlane read{};
        const std::string said = read_picture(file.path, read);
        EXPECT_EQ(said.substr(0, fault.size()), fault);
        EXPECT_EQ(said.empty(), fault.empty()) << said;
    }
}

TEST(Comparison, draws_the_rectangle_expected_beside_actual) {
    const BitPlane expected = picture_with({{10, 5}, {11, 5}, {30, 9}});
    const BitPlane actual = picture_with({{10, 5}, {9, 6}, {30, 9}});
    EXPECT_EQ(explain_difference(compare_pictures(expected, actual), expected, actual),
              R"(2 dots differ in the rectangle 9, 5 to 11, 6; the first is 11, 5, clear and not set
    expected   actual
    .##        .#.
    ...        #..)");
}

TEST(Comparison, cuts_a_large_rectangle) {
    const BitPlane clear{};
    const BitPlane corners = picture_with({{0, 0}, {239, 127}});
    const std::string text = explain_difference(compare_pictures(clear, corners), clear, corners);
    EXPECT_NE(text.find("(cut to 0, 0 to 59, 19)"), std::string::npos);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 21);
    EXPECT_NE(text.find("   #" + std::string(59, '.') + "\n"), std::string::npos);
}

TEST(Comparison, shows_bytes_around_the_place_where_they_part) {
    EXPECT_EQ(explain_bytes(bytes_of("OK"), {}),
              R"(2 bytes expected, 0 there, different from byte 1 on
    expected 4F 4B  "OK"
    actual   (no byte))");
    const Bytes expected(100, 0);
    Bytes actual = expected;
    actual[50] = 1;
    const std::string text = explain_bytes(expected, actual);
    EXPECT_NE(text.find("different from byte 51 on"), std::string::npos);
    EXPECT_NE(text.find("actual   ... 00 00 00 00 00 00 00 00 01 00"), std::string::npos);
}

TEST(MatchAnswers, takes_all_of_them_or_none) {
    clear_pipe(tx_pipe);
    const Bytes wanted = bytes_of("abc");
    EXPECT_EQ(match_answers(wanted), Match::not_yet);
    tx_pipe_put_block(bytes_of("ab"));
    EXPECT_EQ(match_answers(wanted), Match::not_yet);
    tx_pipe_put_block(bytes_of("cd"));
    EXPECT_EQ(match_answers(wanted), Match::matched);
    EXPECT_EQ(match_answers(wanted), Match::impossible);
    EXPECT_EQ(take_answers(), bytes_of("d"));
    EXPECT_EQ(match_answers({}), Match::matched);
}

TEST(Junit, counts_cases_and_holds_only_what_xml_may) {
    const std::vector<CaseResult> results{
        {"good.scn", 0.5, {}},
        {"<bad>.scn", 0.25, {{expectation_failed, 3, "a\x01\"&\xC3\xA4\xFF\nb"}}},
        {"worse.scn", 0, {{expectation_failed, 1, "x"}, {gave_up, 2, "y"}, {wrong_line, 0, "z"}}},
    };
    EXPECT_EQ(junit_xml(results), R"(<?xml version="1.0" encoding="UTF-8"?>
<testsuites tests="3" failures="1" errors="1" time="0.750">
  <testsuite name="orvanel42-headless" tests="3" failures="1" errors="1" time="0.750">
    <testcase classname="scenario" name="good.scn" time="0.500"/>
    <testcase classname="scenario" name="&lt;bad&gt;.scn" time="0.250">
      <failure message="a\x01&quot;&amp;ä\xFF" type="expectation">&lt;bad&gt;.scn:3: error: a\x01&quot;&amp;ä\xFF
b</failure>
    </testcase>
    <testcase classname="scenario" name="worse.scn" time="0.000">
      <failure message="x" type="expectation">worse.scn:1: error: x</failure>
      <error message="y" type="settle">worse.scn:2: error: y</error>
      <error message="z" type="scenario">worse.scn: error: z</error>
    </testcase>
  </testsuite>
</testsuites>
)");
}

TEST(FaultRecords, a_record_cut_short_is_not_complete) {
    const std::string records = "1 12 3\na\nb3 0 0\nend\n";
    const FaultRecords whole = parse_fault_records(records);
    const std::vector<Fault>& faults = whole.faults;
    EXPECT_TRUE(whole.complete);
    ASSERT_EQ(faults.size(), 2u);
    EXPECT_EQ(faults[0].text, "a\nb");
    EXPECT_EQ(faults[0].line, 12);
    for (std::size_t n = 0; n < records.size(); ++n) {
        EXPECT_FALSE(parse_fault_records(records.substr(0, n)).complete) << n;
    }
}

}  // namespace orvanel
