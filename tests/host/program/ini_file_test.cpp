// The editor of the user's file: what it finds, and that it leaves alone what it wasn't asked for.

#include "host/program/ini_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace orvanel {
namespace {

using namespace std::string_literals;
namespace fs = std::filesystem;

std::string value_in(const std::string& text) {
    return std::string(ini_value(text, "Main", "key").value_or("(none)"));
}

std::string with(std::string text, const std::string& key, const std::string& value) {
    set_ini_value(text, "Main", key, value);
    return text;
}

TEST(IniFile, finds_the_first_key_of_the_first_section) {
    struct Case {
        std::string text, value;
    };
    for (const auto& [text, value] : {
             Case{"", "(none)"},
             Case{"key=1", "(none)"},
             Case{"[Main]\nkey=1", "1"},
             Case{"\xEF\xBB\xBF[ mAIN ] \r\n \tKEY \t=  1 2\t\r\n", "1 2"},
             Case{"[Other]\nkey=0\n[Main]\nkey=1\nkey=2\n[Main]\nkey=3", "1"},
             Case{"[Main]\n[Other]\nkey=1\n[Main]\nkey=2", "(none)"},
             Case{"[Main]\n;key=1\n# key=2\nkeys=3\nkey\nkey=4", "4"},
             Case{"[Main\nkey=1\n[Main] stray\nkey==2", "=2"},
             Case{"[Main]\nkey=\n", ""},
             Case{"[Main]\nkey=a;b ; a comment ; more", "a;b"},
             Case{"[Main]\nkey= ; a comment", ""},
             Case{"[Main]\nkey=\" a ; b \"  ; a comment", " a ; b "},
             Case{"[Main]\nkey='it''s'", "it''s"},
             Case{"[Main]\nkey=\"a\" b", "\"a\" b"},
             Case{"[Main]\nkey=\"a", "\"a"},
             Case{"[Main]\nkey=a\0b\n"s, "a\0b"s},
         })
        EXPECT_EQ(value_in(text), value) << text;
}

TEST(IniFile, a_change_touches_nothing_but_the_value) {
    const std::string before = "; mine\r\nstray\r\n\r\n[Other]\nkey=0\n  [main]\r\n"
                               "\tKey =  \"12\"   ; seconds\r\n"
                               "empty=\nnothing = ; yet\nkey=3\n\n; end\n[Ports]\nkey=4";
    EXPECT_EQ(with(before, "key", "12"), before) << "it has that value";
    std::string text = before;
    for (const auto& [key, value] :
         {std::pair{"key", "7"}, {"empty", "8"}, {"nothing", "9"}, {"new", "10"}, {"newer", "11"}})
        set_ini_value(text, "Main", key, value);
    EXPECT_EQ(text, "; mine\r\nstray\r\n\r\n[Other]\nkey=0\n  [main]\r\n"
                    "\tKey =  7   ; seconds\r\n"
                    "empty=8\nnothing =9 ; yet\nkey=3\nnew=10\r\nnewer=11\r\n\n; end\n[Ports]\n"
                    "key=4");
}

TEST(IniFile, what_is_new_gets_the_line_ends_of_the_file) {
    EXPECT_EQ(with("", "key", "1"), "[Main]\nkey=1\n");
    EXPECT_EQ(with("[Main]", "key", "1"), "[Main]\nkey=1");
    EXPECT_EQ(with("[Main]\r\n[Other]\r\n", "key", "1"), "[Main]\r\nkey=1\r\n[Other]\r\n");
    EXPECT_EQ(with("[Main]\r\na=0", "key", "1"), "[Main]\r\na=0\r\nkey=1");
    EXPECT_EQ(with("; only\r\n", "key", "1"), "; only\r\n[Main]\r\nkey=1\r\n");
    EXPECT_EQ(with("\xEF\xBB\xBF[Main]\na=0\n", "key", "1"), "\xEF\xBB\xBF[Main]\na=0\nkey=1\n");
}

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// Of any text: what was set is found again, setting it twice is setting it once, and of the lines
// that were there one at most has changed.
TEST(IniFile, random_bytes_lose_no_line) {
    constexpr std::string_view pieces[]{"[Main]", "[main", "[",    "]", "key",         "KEY=", "=",
                                        ";",      "#",     "\"",   "'", " ",           "\t",   "\r",
                                        "\n",     "\n",    "\r\n", "5", "\xEF\xBB\xBF"};
    std::mt19937 random(1);
    for (int i = 0; i < 20'000; ++i) {
        std::string text;
        for (auto n = random() % 30; n > 0; --n) {
            const auto piece = random() % (std::size(pieces) + 1);
            if (piece < std::size(pieces))
                text += pieces[piece];
            else
                text += static_cast<char>(random() & 0xFF);
        }
        const std::string changed = with(text, "key", "42");
        ASSERT_EQ(value_in(changed), "42") << text;
        ASSERT_EQ(with(changed, "key", "42"), changed) << text;
        std::vector<std::string> kept = lines_of(changed);
        int lost = 0;
        for (const std::string& line : lines_of(text)) {
            const auto same = std::ranges::find_if(kept, [&line](const std::string& other) {
                return other == line || other == line + '\r';
            });
            if (same == kept.end())
                ++lost;
            else
                kept.erase(same);
        }
        ASSERT_LE(lost, 1) << text << "\n-> " << changed;
    }
}

class IniOnDisk : public testing::Test {
  protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "orvanel.XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    void TearDown() override { fs::remove_all(folder); }

    [[nodiscard]] std::string fault_of(const std::string& name) const {
        std::string text;
        const std::string path = (folder / name).string();
        const std::string fault = load_ini(path, text);
        return fault.starts_with(path + ": ") ? fault.substr(path.size() + 2) : fault;
    }

    fs::path folder;
};

TEST_F(IniOnDisk, what_is_no_readable_file_is_told_and_not_waited_for) {
    fs::create_directory(folder / "folder");
    fs::create_symlink("loop", folder / "loop");
    fs::create_symlink("nowhere", folder / "nothing");
    std::ofstream(folder / "file") << "x";
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    std::ofstream(folder / "huge") << "x";
    fs::resize_file(folder / "huge", std::uintmax_t{1} << 40);
    EXPECT_EQ(fault_of("missing"), "");
    EXPECT_EQ(fault_of("nothing"), "") << "a link to a file that isn't there";
    EXPECT_EQ(fault_of("folder"), "not a plain file");
    EXPECT_EQ(fault_of("pipe"), "not a plain file");
    EXPECT_EQ(fault_of("loop"), "Too many levels of symbolic links");
    EXPECT_EQ(fault_of("huge"), "longer than 1048576 bytes");
    EXPECT_EQ(fault_of("file/x"), "") << "nothing can be there";
}

TEST_F(IniOnDisk, takes_any_bytes_up_to_its_limit) {
    std::string big = "[Main]\n";
    while (big.size() < 1'000'000)
        big.append(big.size() % 97, '\0').append("=\r\n\n\"; x\n");
    std::ofstream(folder / "big", std::ios::binary) << big;
    std::string text;
    EXPECT_EQ(load_ini((folder / "big").string(), text), "");
    EXPECT_TRUE(text == big);
    set_ini_value(text, "Main", "key", "1");
    EXPECT_EQ(value_in(text), "1");
    EXPECT_EQ(text.size(), big.size() + std::string_view("key=1\n").size());
}

// Each line and each section is looked at once: else this takes minutes.
TEST(IniFile, takes_a_key_out_wherever_it_stands) {
    std::string text = "[Other]\nkey=0\n[Empty]\n\n";
    for (int i = 0; i < 20'000; ++i)
        text += "[Main]\nkey=1\n KEY = 2 ; twice\n\n";
    text += "[Main]\n; mine\n";
    for (int i = 0; i < 100'000; ++i)
        text += "key=\n";
    text += "keys=3\n[Main]\nkey=4";
    remove_ini_value(text, "Main", "key");
    EXPECT_EQ(text, "[Other]\nkey=0\n[Empty]\n\n[Main]\n; mine\nkeys=3\n");
}

}  // namespace
}  // namespace orvanel
