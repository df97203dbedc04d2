// The user's settings: defaults, what is made of odd values, what is saved; the folder that they
// live in, and the place of the window.

#include "firmware/store/ground/eeprom.h"
#include "host/program/image_file.h"
#include "host/program/ini_file.h"
#include "host/program/program_folder.h"
#include "host/program/settings.h"
#include "host/skin/lcd_colours.h"
#include "host/window/ground/menu.h"
#include "host/window/ground/window_place.h"
#include "host/window/roof/menu_command.h"
#include "link/ground/port.h"
#include "link/roof/com_port.h"
#include "tests/support/fake_line.h"
#include "tests/support/fake_window.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>

namespace orvanel {
namespace {

using namespace std::string_literals;
namespace fs = std::filesystem;

const std::string first_save =
    "[Orvanel42]\ncom=none\nbaud=115200\nprotocol=1\nbeep=0\nxpos=100\nypos=60\nzoom=1\n"
    "iopvisible=0\niopx=0\niopy=0\nView90=0\nShowWindow=1\nontop=0\nviewkit=0\nvkctyp=1\nvkcpol=1\n"
    "vkcbl=1\ncustx=0\ncusty=0\n";

std::string saved(std::string ini) {
    take_settings(ini, ".");
    model_apply();
    put_settings(ini);
    return ini;
}

TEST(Settings, a_first_run_saves_the_defaults_with_the_model_applied) {
    EXPECT_EQ(saved(""), first_save);
    EXPECT_EQ(setting_line("adr"), "adr=7");
    EXPECT_EQ(setting_line("memKB"), "memKB=32");
    EXPECT_EQ(setting_line("nothing"), std::nullopt);
}

TEST(Settings, lines_that_mean_nothing_are_told_with_what_they_may_be_meant_for) {
    using Lines = std::vector<std::string>;
    EXPECT_EQ(unknown_settings(first_save + "[orvanel42 VIEW]\nZoom=4\n[Ports]\ncom8=x\n"),
              Lines());
    EXPECT_EQ(
        unknown_settings("\xEF\xBB\xBF; mine\nzoom=2\n\n[Orvanel42]\nbaut=2\r\nbaud 9600\n"
                         "# adr=3\n[Prots]\nCOM1=pty\n[Ports]\nCOM9=pty\n[Bench 4 notes of mine]\n"
                         "zoom=2\n[Orvanel42 View]\nqqqqqq=1"),
        (Lines{
            "2: stands before any section; the settings are in [Orvanel42]",
            "5: no key 'baut' in [Orvanel42]; is it 'baud'?",
            "6: no KEY=VALUE, and no comment, which begins with ;",
            "8: no section 'Prots'; is it 'Ports'?", "11: no key 'COM9' in [Ports]; is it 'COM1'?",
            "12: no section 'Bench 4 notes of mine'", "15: no key 'qqqqqq' in [Orvanel42 View]"}));
}

TEST(Settings, odd_values_are_put_right) {
    struct Case {
        const char *written, *saved;
    };
    for (const auto& [written, saved] : {
             Case{"com=8", "com=8"},
             Case{"com=9", "com=none"},
             Case{"com=-1", "com=none"},
             Case{"com=none", "com=none"},
             Case{"baud=12345", "baud=12345"},
             Case{"baud=fast", "baud=9600"},
             Case{"baud=", "baud=9600"},
             Case{"baud=99999999999999999999", "baud=2147483647"},
             Case{"protocol=", "protocol=0"},
             Case{"protocol=-2", "protocol=1"},
             Case{"adr=3", "adr=3"},
             Case{"adr=263", "adr=7"},
             Case{"adr=-1", "adr=255"},
             Case{"adr=x", "adr=0"},
             Case{"beep=yes", "beep=0"},
             Case{"xpos= -12 dots", "xpos=-12"},
             Case{"xpos=-99999999999", "xpos=-2147483648"},
             Case{"ypos=\" +7\"", "ypos=7"},
             Case{"zoom=4", "zoom=1"},
             Case{"ZOOM = 3 ; large", "zoom=3"},
             Case{"View90=256", "View90=1"},
             Case{"ShowWindow=0x", "ShowWindow=0"},
             Case{"viewkit=4", "viewkit=0"},
             Case{"viewkit=-1", "viewkit=0"},
             Case{"memKB=64", "memKB=64"},
             Case{"memKB=48", "memKB=32"},
             Case{"memKB=16", "memKB=32"},
         }) {
        take_settings("[Orvanel42]\n"s + written, ".");
        const std::string_view line(saved);
        EXPECT_EQ(setting_line(line.substr(0, line.find('='))), saved) << written;
    }
}

TEST(Settings, a_fixed_model_takes_the_place_of_the_custom_glass) {
    const auto glass = [](const std::string& model, const std::string& of_custom) {
        take_settings("[Orvanel42]\nviewkit=" + model + "\n" + of_custom, ".");
        model_apply();
        return std::array{lcd_type, lcd_polarizer, lcd_backlight};
    };
    const std::string own = "vkctyp=2\nvkcpol=1\nvkcbl=4";
    EXPECT_EQ(glass("0", own), (std::array{1, 1, 1}));
    EXPECT_EQ(glass("1", own), (std::array{0, 0, 1}));
    EXPECT_EQ(glass("2", own), (std::array{0, 0, 5}));
    EXPECT_EQ(glass("3", own), (std::array{2, 1, 4}));
    EXPECT_EQ(glass("3", ""), (std::array{1, 1, 0}));
    EXPECT_EQ(glass("3", "vkctyp=3\nvkcpol=-1\nvkcbl=99"), (std::array{2, 0, 5}));
}

TEST(Settings, the_users_own_lines_outlast_a_save) {
    const std::string ini =
        "; bench 3\r\n[Orvanel42]\r\nmemKB=48\r\nadr = 300\r\nbeep = 0 ; quiet\r\n"
        "mine=7\r\n[Ports]\r\nCOM2=tcp:7042\r\n";
    EXPECT_EQ(saved(ini).substr(0, ini.find("[Ports]")), ini.substr(0, ini.find("[Ports]")));
    EXPECT_TRUE(saved(ini).ends_with("custy=0\r\n[Ports]\r\nCOM2=tcp:7042\r\n"));
    EXPECT_EQ(saved(saved(ini)), saved(ini));
}

TEST(Settings, a_large_zoom_is_kept_beside_the_last_small_one_only_while_it_holds) {
    const auto zooms = [](const std::string& ini) {
        take_settings(ini, ".");
        return std::pair{view_zoom, *setting_line("zoom")};
    };
    EXPECT_EQ(zooms("[Orvanel42 View]\nzoom=8\n[Orvanel42]\nzoom=3"), (std::pair{8, "zoom=3"s}));
    EXPECT_EQ(zooms("[Orvanel42 View]\nzoom=9\n[Orvanel42]\nzoom=2"), (std::pair{2, "zoom=2"s}));
    EXPECT_EQ(zooms("[Orvanel42 View]\nzoom=2"), (std::pair{1, "zoom=1"s}));

    std::string ini = "\xEF\xBB\xBF[Orvanel42 View]\r\nzoom=8 ; big\r\n\r\n[Mine]\r\na=1\r\n";
    take_settings(ini, ".");
    set_view_zoom(2);
    set_view_zoom(5);
    put_settings(ini);
    EXPECT_EQ(ini_value(ini, "Orvanel42", "zoom"), "2");
    EXPECT_EQ(ini_value(ini, "Orvanel42 View", "zoom"), "5");
    set_view_zoom(3);
    put_settings(ini);
    EXPECT_EQ(ini_value(ini, "Orvanel42", "zoom"), "3");
    EXPECT_TRUE(ini.starts_with("\xEF\xBB\xBF[Mine]\r\na=1\r\n[Orvanel42]\r\n")) << ini;
}

TEST(Settings, a_chosen_port_is_saved_though_the_start_opened_another) {
    take_settings("[Orvanel42]\ncom=3\nbaud=9600", ".");
    port_setting.of_run = baud_setting.of_run = true;  // as --serial does
    com_port = 1;
    com_baud = 115200;
    EXPECT_EQ(setting_line("com"), "com=3");
    EXPECT_EQ(setting_line("baud"), "baud=9600");
    choose_port(2);
    EXPECT_EQ(setting_line("com"), "com=2");
    EXPECT_EQ(setting_line("baud"), "baud=9600");
    menu_command(item_baud + 4);
    EXPECT_EQ(setting_line("baud"), "baud=19200");
    choose_port(0);
    close_link();
    com_port = -1;
}

TEST(Settings, ports_name_what_stands_behind_them) {
    take_settings("[ports]\ncom2=/dev/ttyUSB0@19200 ; adapter\nCOM3=tcp:7042\nCOM4=pty\n"
                  "COM5=\"pty:my link\"\nCOM6=pty:/tmp/link\nCOM7=\nCOM8=pty:\nCOM9=x",
                  "/home/me/kit");
    EXPECT_EQ(port_devices, (std::array<std::string, max_com_ports>{
                                "/dev/ttyS0", "/dev/ttyUSB0@19200", "tcp:7042", "pty",
                                "pty:/home/me/kit/my link", "pty:/tmp/link", "", "pty:"}));
    EXPECT_EQ(setting_line("com"), "com=none");
}

TEST(Settings, a_window_off_every_screen_comes_back) {
    const std::array screens{PixelRect{0, 0, 1920, 1080}, PixelRect{1920, 0, 3840, 1200}};
    const auto brought = [&screens](int x, int y) {
        const PixelPoint place = brought_back({x, y}, 300, 200, screens);
        return std::pair{place.x, place.y};
    };
    using Place = std::pair<int, int>;
    EXPECT_EQ(brought(-299, -199), Place(-299, -199)) << "a corner of it shows";
    EXPECT_EQ(brought(3839, 1199), Place(3839, 1199));
    EXPECT_EQ(brought(-300, 0), Place(100, 60));
    EXPECT_EQ(brought(0, 1080), Place(100, 60)) << "only the other screen is that high";
    EXPECT_EQ(brought(2147483647, 2147483647), Place(100, 60));
    EXPECT_EQ(brought(-2147483647 - 1, 0), Place(100, 60));
    window_moved(30, 40);
    EXPECT_EQ(Place(window_x, window_y), Place(30, 40));
    window_moved(-1, 40);
    EXPECT_EQ(Place(window_x, window_y), Place(0, 0));
}

class Folder : public testing::Test {
  protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "orvanel.XXXXXX").string();
        folder = mkdtemp(name.data());
    }
    void TearDown() override { fs::remove_all(folder); }

    void put(const std::string& name, const std::string& text) const {
        std::ofstream(folder / name, std::ios::binary) << text;
    }
    [[nodiscard]] std::string get(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(folder / name, std::ios::binary).rdbuf();
        return text.str();
    }

    fs::path folder;
};

TEST_F(Folder, is_made_and_filled) {
    const std::string inner = (folder / "a" / "b").string();
    ASSERT_EQ(open_program_folder(inner), "");
    model_apply();
    EXPECT_TRUE(save_program_folder().empty());
    EXPECT_EQ(get("a/b/simulator.ini"), first_save);
    EXPECT_FALSE(fs::exists(folder / "a/b/Orvanel42.bin")) << "nothing has been programmed";
}

TEST_F(Folder, the_image_has_the_size_of_the_settings) {
    put("simulator.ini", "[Orvanel42]\nmemKB=64\n");
    put("Orvanel42.bin", "abc");
    ASSERT_EQ(open_program_folder(folder.string()), "");
    EXPECT_EQ(eeprom_size, eeprom_large);
    EXPECT_EQ(eeprom_image[2], 'c');
    EXPECT_EQ(eeprom_image[eeprom_large - 1], 0xFF);
    eeprom_state = EepromState::programmed;
    EXPECT_TRUE(save_program_folder().empty());
    EXPECT_EQ(fs::file_size(folder / "Orvanel42.bin"), 65536u);
    EXPECT_EQ(get("Orvanel42.bin.bak"), "abc");
    put("Orvanel42.bin", std::string(65537, 'x'));
    ASSERT_EQ(open_program_folder(folder.string()), "");
    EXPECT_NE(image_notice.find("of 65537 bytes only the first 65536"), std::string::npos)
        << image_notice;
    EXPECT_TRUE(image_notice.ends_with("saved as that file, it is renamed to " +
                                       (folder / "Orvanel42.bin.1").string()))
        << image_notice;
    image_notice.clear();
    put("Orvanel42.bin.1", "somebody took the name that the notice foretells");
    EXPECT_EQ(save_image(folder / "Orvanel42.bin", eeprom_bytes(), Backup::none), "");
    EXPECT_TRUE(image_notice.ends_with("is now " + (folder / "Orvanel42.bin.2").string()))
        << image_notice;
    image_notice.clear();
}

// As the firmware's restart leaves a copy of it.
void program(char content) {
    eeprom_state = EepromState::programmed;
    eeprom_image[0] = static_cast<std::uint8_t>(content);
    eeprom_leave_copy();
}

void timer_at(std::int64_t ms) {
    fake_line.now_ms = ms;
    save_programmed_image();
}

TEST_F(Folder, a_running_program_saves_the_image_a_second_after_the_restart) {
    put("Orvanel42.bin", "0");
    const std::string path = folder.string();
    ASSERT_EQ(open_program_folder(path), "");
    timer_at(0);
    program('1');
    timer_at(5000);
    program('2');
    eeprom_image[0] = '3';
    timer_at(5999);
    EXPECT_EQ(get("Orvanel42.bin"), "0");
    timer_at(6000);
    EXPECT_EQ(get("Orvanel42.bin")[0], '2') << "the newest that is whole";
    timer_at(9000);
    program('4');
    timer_at(9100);
    timer_at(10'100);
    EXPECT_EQ(get("Orvanel42.bin")[0], '4');
    fs::remove(folder / "Orvanel42.bin");
    timer_at(20'000);
    EXPECT_FALSE(fs::exists(folder / "Orvanel42.bin")) << "that one is saved";
    EXPECT_EQ(get("Orvanel42.bin.bak"), "0") << "as it was before the run";
}

TEST_F(Folder, a_save_of_a_running_program_that_fails_is_shown_once_and_tried_again) {
    ASSERT_EQ(open_program_folder(folder.string()), "");
    mkfifo((folder / "Orvanel42.bin").c_str(), 0600);  // which would wait for its other end
    program('1');
    fake_window.boxes.clear();
    for (const std::int64_t ms : {0, 1000, 2000, 10999, 11000})
        timer_at(ms);
    EXPECT_EQ(fake_window.boxes.size(), 1U);
    fs::remove(folder / "Orvanel42.bin");
    timer_at(21000);
    EXPECT_EQ(get("Orvanel42.bin")[0], '1');
}

TEST_F(Folder, a_save_that_failed_is_not_tried_again_once_the_copy_is_withdrawn) {
    ASSERT_EQ(open_program_folder(folder.string()), "");
    mkfifo((folder / "Orvanel42.bin").c_str(), 0600);
    timer_at(0);
    program('1');
    timer_at(100);
    timer_at(1100);
    fs::remove(folder / "Orvanel42.bin");
    eeprom_withdraw_copy();
    timer_at(11'100);
    EXPECT_FALSE(fs::exists(folder / "Orvanel42.bin"));
    program('2');
    timer_at(20'000);
    timer_at(21'000);
    EXPECT_EQ(get("Orvanel42.bin")[0], '2') << "the next one is";
}

TEST_F(Folder, keeps_what_the_user_writes_while_the_program_runs) {
    put("simulator.ini", "[Orvanel42]\nadr=3\n");
    ASSERT_EQ(open_program_folder(folder.string()), "");
    put("simulator.ini", "[Orvanel42]\nmemKB=64\nbeep=1\n");
    EXPECT_TRUE(save_program_folder().empty());
    EXPECT_TRUE(get("simulator.ini").starts_with("[Orvanel42]\nmemKB=64\nbeep=0\ncom=none\n"));
}

TEST_F(Folder, what_can_not_be_read_is_told_and_left_alone) {
    const std::string path = folder.string();
    const std::string nearly_too_long(max_ini_bytes, '\n');
    put("simulator.ini", nearly_too_long);
    ASSERT_EQ(open_program_folder(path), "");
    EXPECT_EQ(save_program_folder(),
              std::vector{"cannot save " + path + "/simulator.ini: longer than 1048576 bytes"});
    EXPECT_EQ(get("simulator.ini"), nearly_too_long);
    fs::remove(folder / "simulator.ini");
    fs::create_directory(folder / "simulator.ini");
    EXPECT_EQ(open_program_folder(path), path + "/simulator.ini: not a plain file");
    EXPECT_EQ(save_program_folder(),
              std::vector{"cannot save " + path + "/simulator.ini: not a plain file"});
    fs::remove(folder / "simulator.ini");
    fs::create_directory(folder / "Orvanel42.bin");
    EXPECT_EQ(open_program_folder(path), path + "/Orvanel42.bin: not a plain file");
    put("file", "");
    EXPECT_EQ(open_program_folder(path + "/file/x"), path + "/file/x: Not a directory");
}

TEST_F(Folder, an_image_that_fails_does_not_lose_the_settings) {
    put("Orvanel42.bin", "");
    fs::permissions(folder / "Orvanel42.bin", fs::perms(0444));
    const std::string path = folder.string();
    ASSERT_EQ(open_program_folder(path), "");
    model_apply();
    eeprom_state = EepromState::programmed;
    EXPECT_EQ(save_program_folder(),
              std::vector{"cannot save " + path + "/Orvanel42.bin: write-protected"});
    EXPECT_EQ(get("simulator.ini"), first_save);
}

}  // namespace
}  // namespace orvanel
