// The program as a shell sees it: its command line, folder and files, statuses, several scenarios,
// signals.

#include "tests/host/platform/headless/program_support.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <signal.h>
#include <string>
#include <thread>

namespace orvanel {

TEST_F(ScenarioProgram, the_first_kind_of_fault_gives_the_status) {
    printed("expect-answers FF\nsettle 0\nexpect-answers FF\ntime", 3);
    EXPECT_EQ(get("out"), "time 5\n");
    printed("settle 0\nexpect-answers FF\ntime 1\ntime", 2);
    EXPECT_EQ(get("out"), "");
    printed("expect-answers \"\"", 0);
}

TEST_F(ScenarioProgram, a_wrong_line_ends_the_run_and_says_why) {
    struct Case {
        std::string line, fault;
    };
    for (const auto& [line, fault] :
         {Case{"sned 00", "unknown command 'sned'; is it 'send'?"},
          Case{"\x01\xFF", "unknown command '\\x01\\xFF'"},
          Case{"#TA",
               "unknown command '#TA'; a stream of the module's commands is played by 'feed FILE'"},
          Case{"wait", "a number is missing, 0 to 1000000000; the form is: wait MS"},
          Case{"reset 4", "4 is outside 0 to 3; the form is: reset [KIND]"},
          Case{"answers now", "'now' is too much; the form is: answers"},
          Case{"screen a.gif", "'a.gif' ends neither in .png nor in .pbm; the form is: screen FILE "
                               "[main or flash]"},
          Case{"screen no/a.png", "can't write no/a.png: No such file or directory"},
          Case{"feed nothing", "nothing: no such file"},
          Case{"feed .", ".: not a plain file"},
          Case{"setting", "a name is missing; the form is: setting KEY"},
          Case{"setting vkcblu",
               "there is no setting 'vkcblu'; is it 'vkcbl'?; the settings are com, baud, "
               "protocol, adr, beep, xpos, ypos, zoom, iopvisible, iopx, iopy, View90, "
               "ShowWindow, ontop, viewkit, vkctyp, vkcpol, vkcbl, custx, custy, memKB"},
          Case{"setting nothing",
               "there is no setting 'nothing'; the settings are com, baud, protocol, adr, beep, "
               "xpos, ypos, zoom, iopvisible, iopx, iopy, View90, ShowWindow, ontop, viewkit, "
               "vkctyp, vkcpol, vkcbl, custx, custy, memKB"},
          Case{"menu 131", "the menu has no item 131"},
          Case{"dialog 6010", "no dialog is open"},
          Case{"scenario 2", "version 2 of the scenario language is unknown; this is version 1"},
          Case{"wait 0\nscenario 1", "'scenario' is only for the first line"},
          Case{std::string("send \"a\0\"", 9), "there is a NUL byte in the line"},
          Case{"send \"" + std::string(80001, 'x') + "\"",
               "80001 bytes don't fit, rx_pipe has room for 80000; 'settle' first, or 'feed' a "
               "file"},
          Case{std::string(1 << 21, 'x'), "the line is longer than 1048576 bytes"}}) {
        printed(line + "\ntime\n", 2);
        const int number = line.find('\n') == std::string::npos ? 1 : 2;
        EXPECT_EQ(get("err"), "a.scn:" + std::to_string(number) + ": error: " + fault + "\n");
        EXPECT_EQ(get("out"), "");
    }
    printed("menu 273\ndialog 0\n", 2);
    EXPECT_EQ(get("err"), "a.scn:2: error: dialog 6000 has no control 0\n");
}

TEST_F(ScenarioProgram, what_a_terminal_would_act_on_is_shown_to_the_user_instead) {
    put("\x1B[2J.scn", "feed \x1B]0;\xC3\xBC\xC2\x9B\xE2\x80\xAE\xFF\x07\n");
    const std::string message =
        "\\x1B[2J.scn:1: error: \\x1B]0;\xC3\xBC\\xC2\\x9B\\xE2\\x80\\xAE\\xFF\\x07"
        ": no such file\n";
    EXPECT_EQ(run({"\x1B[2J.scn"}), 2);
    EXPECT_EQ(get("err"), message);
    put("a.scn", "time\n");
    EXPECT_EQ(run({"\x1B[2J.scn", "a.scn"}), 2);
    EXPECT_TRUE(get("err").starts_with(message)) << get("err");

    std::filesystem::create_directory(folder / "kept");
    put("kept/Orvanel42.bin", std::string(32768, '\xFF'));
    put("kept/simulator.ini", "[Orvanel42]\ncom=1\n[Ports]\nCOM1=/dev/\x1B[2J\n");
    EXPECT_EQ(run({"--realtime", "--dir", "kept", "a.scn"}), 0);
    EXPECT_EQ(get("err"), "orvanel42-headless: error: /dev/\\x1B[2J: No such file or directory\n");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"--junit", "\x1B[2J/a", "a.scn"},
          {"--image", "\x1B[2J", "a.scn"},
          {"--dir", "a.scn/\x1B[2J", "a.scn"},
          {"--trace", "\x1B[2J/a", "a.scn"},
          {"--realtime", "--serial", "\x1B[2J", "a.scn"},
          {"--\x1B[2J"}}) {
        EXPECT_EQ(run(words), 2) << words.front();
        EXPECT_EQ(get("err").find('\x1B'), std::string::npos) << words.front();
        EXPECT_NE(get("err").find("\\x1B[2J"), std::string::npos) << get("err");
    }
}

TEST_F(ScenarioProgram, a_wrong_command_line_gives_2) {
    for (const std::vector<std::string>& words : {std::vector<std::string>{"--mem", "48"},
                                                  {"--image", "missing"},
                                                  {"--image", "."},
                                                  {"--jobs", "0"},
                                                  {"--dir", ".", "--mem", "64"},
                                                  {"--dir", ".", "--image", "in"},
                                                  {"--dir", ".", "a.scn", "b.scn"},
                                                  {"--dir", "/dev/null/x"},
                                                  {"--trace", "t", "a.scn", "b.scn"},
                                                  {"--trace", "t", "--trace-json", "u", "a.scn"},
                                                  {"--nonsense"},
                                                  {"missing.scn"},
                                                  {"."},
                                                  {"-", "-"}}) {
        EXPECT_EQ(run(words), 2) << words.front();
        EXPECT_NE(get("err"), "") << words.front();
        EXPECT_EQ(get("out"), "") << words.front();
    }
    for (const char* mem : {"48", "x", "", "032"}) {
        EXPECT_EQ(run({"--mem", mem}), 2) << mem;
        EXPECT_NE(get("err").find(std::string("--mem: '") + mem + "' is none of 32, 64"),
                  std::string::npos)
            << get("err");
    }
    EXPECT_EQ(run({"--version"}), 0);
    EXPECT_EQ(run({"--commands"}), 0);
    EXPECT_NE(get("out").find("ESC G D"), std::string::npos);
}

// Programs a macro's record, and restarts the module, which has the image saved.
const std::string program_image = "send 1B \"&E\" 30 02 04 00 \"W\" 34 0E 01 00\n"
                                  "send 1B \"&E\" 00 00 00 00 \"J\"\nsettle\n";

TEST_F(ScenarioProgram, lives_in_a_folder_and_saves_image_and_settings) {
    std::filesystem::create_directory(folder / "kept");
    put("kept/simulator.ini", "; bench\n[orvanel42]\nmemKB=64\nadr=3\nZOOM = 2 ; large\nbaud=x");
    put("kept/Orvanel42.bin", std::string(65536, '\xFF'));  // without one the demo would play
    put("a.scn", "setting zoom\nsetting MEMkb\nsetting baud\nsetting com\n" + program_image);
    EXPECT_EQ(run({"--dir", "kept", "a.scn"}), 0) << get("err");
    EXPECT_EQ(get("out"),
              "setting zoom=2\nsetting memKB=64\nsetting baud=9600\nsetting com=none\n");
    EXPECT_EQ(std::filesystem::file_size(folder / "kept/Orvanel42.bin"), 65536u);
    EXPECT_TRUE(get("kept/simulator.ini")
                    .starts_with("; bench\n[orvanel42]\nmemKB=64\nadr=3\nZOOM = 2 ; large\n"
                                 "baud=9600\ncom=none\nprotocol=1\nbeep=0\nxpos=100"));

    put("a.scn", "send 1B \"&E\" 30 02 04 00 \"R\"\nawait-answers 34 0E 01 00\n");
    const std::string settings = get("kept/simulator.ini");
    for (const char* mode : {"--jobs=1", "--realtime"})
        EXPECT_EQ(run({mode, "--dir", "kept", "a.scn"}), 0) << get("err");
    EXPECT_EQ(get("kept/simulator.ini"), settings);
    EXPECT_EQ(printed("setting memKB\nsetting xpos\nsetting vkcbl\n"),
              "setting memKB=32\nsetting xpos=100\nsetting vkcbl=1\n")
        << "without the option the folder means nothing";
}

TEST_F(ScenarioProgram, a_misspelt_setting_is_told_once_and_stays) {
    std::filesystem::create_directory(folder / "kept");
    put("kept/simulator.ini", "[Orvanel42]\nmenKB=64\n");
    put("kept/Orvanel42.bin", std::string(32768, '\xFF'));
    put("a.scn", "time\n");
    EXPECT_EQ(run({"--dir", "kept", "a.scn"}), 0);
    EXPECT_EQ(get("err"), "kept/simulator.ini:2: no key 'menKB' in [Orvanel42]; is it 'memKB'?\n");
    EXPECT_TRUE(get("kept/simulator.ini").starts_with("[Orvanel42]\nmenKB=64\ncom=none\n"));
}

TEST_F(ScenarioProgram, a_first_start_plays_the_demo_and_keeps_what_it_programs) {
    std::filesystem::create_directory(folder / "kept");
    put("kept/simulator.ini", "[Orvanel42]\niopvisible=1\nontop=1\nShowWindow=0\n");
    put("a.scn", "panel\nmark 250\ngeometry\nsettle\n");
    EXPECT_EQ(run({"--dir", "kept", "a.scn"}), 0) << get("err");
    EXPECT_EQ(get("out"),
              "panel 1 0 0 0 0 0 0 0\nmark 250 1\ngeometry 100 60 292 164 cut on-top\n");
    EXPECT_EQ(get("kept/Orvanel42.bin").size(), 32768u);
    EXPECT_TRUE(get("kept/simulator.ini").find("iopvisible=1") != std::string::npos);

    put("a.scn", "demo\nsettle\npanel\n");
    EXPECT_EQ(run({"--save-image", "demo.bin", "a.scn"}), 0) << get("err");
    EXPECT_EQ(get("out"), "panel 0\n");
    EXPECT_TRUE(get("demo.bin") == get("kept/Orvanel42.bin"));
}

TEST_F(ScenarioProgram, a_start_for_a_device_on_the_line_plays_no_demo) {
    put("a.scn", "settle\n");
    EXPECT_EQ(run({"--realtime", "--serial", "pty", "--dir", "kept", "a.scn"}), 0) << get("err");
    EXPECT_FALSE(std::filesystem::exists(folder / "kept/Orvanel42.bin"));
}

TEST_F(ScenarioProgram, the_protocol_of_the_command_line_is_for_this_run) {
    std::filesystem::create_directory(folder / "kept");
    put("kept/Orvanel42.bin", std::string(32768, '\xFF'));
    put("a.scn", "mark 330\nport 1\nline 1B \"?\"\nwait 10\nline-answers\nsetting protocol\n");
    EXPECT_EQ(run({"--protocol", "plain", "--dir", "kept", "a.scn"}), 0) << get("err");
    EXPECT_EQ(get("out"), "mark 330 0\nline-answers" + identity + "setting protocol=1\n");
    EXPECT_NE(get("kept/simulator.ini").find("\nprotocol=1\n"), std::string::npos);

    // Until the user chooses.
    put("kept/simulator.ini", "[Orvanel42]\nprotocol=0\n");
    put("a.scn", "mark 330\nsetting protocol\nmenu 330\nmenu 330\nsetting protocol\n");
    EXPECT_EQ(run({"--protocol", "pactlink", "--dir", "kept", "a.scn"}), 0) << get("err");
    EXPECT_EQ(get("out"), "mark 330 1\nsetting protocol=0\nsetting protocol=1\n");
    EXPECT_NE(get("kept/simulator.ini").find("\nprotocol=1\n"), std::string::npos);
    EXPECT_EQ(run({"--protocol", "raw", "a.scn"}), 2);
}

TEST_F(ScenarioProgram, the_mark_that_some_editors_put_before_a_text_is_none_of_it) {
    const std::string mark = "\xEF\xBB\xBF";
    put("part.scn", mark + "time\n");
    EXPECT_EQ(printed(mark + "scenario 1\ninclude part.scn"), "time 5\n");
    put("in", mark + "protocol 0\nsetting protocol\n");
    EXPECT_EQ(run({}), 0) << get("err");
    EXPECT_EQ(get("out"), "setting protocol=0\n");
    EXPECT_EQ(printed("time\n" + mark + "time\n", 2), "time 5\n") << "only at the start";
}

TEST_F(ScenarioProgram, a_file_that_is_no_scenario_is_named_for_what_it_is) {
    put("logo.PNG", "\x89PNG\r\n\x1A\n");
    put("page.kit", "kit 1\n");
    put("image", std::string(32768, '\xFF'));
    for (const char* name : {"logo.PNG", "page.kit", "image"}) {
        EXPECT_EQ(run({"--junit", "results.xml", name}), 2);
        EXPECT_NE(get("err").find(std::string(name) + ": error: is "), std::string::npos)
            << get("err");
        EXPECT_NE(get("results.xml").find(" no scenario. "), std::string::npos);
    }
    EXPECT_EQ(run({"--kit", "logo.PNG"}), 2);
    EXPECT_NE(get("err").find("logo.PNG is a picture, no source of a kit"), std::string::npos);
}

TEST_F(ScenarioProgram, leading_lines_hold_before_the_line_opens) {
    std::filesystem::create_directory(folder / "kept");
    put("kept/Orvanel42.bin", std::string(32768, '\xFF'));
    put("kept/simulator.ini", "[Orvanel42]\ncom=1\n[Ports]\nCOM1=pty\nCOM2=pty\n");
    put("kept/COM1", "in the way, which would be told if it were opened");
    put("a.scn", "; the line\r\nscenario 1\r\n\r\nport 2\r\nprotocol 0\ntitle\nmark 312\n");
    EXPECT_EQ(run({"--realtime", "--dir", "kept", "a.scn"}), 0);
    EXPECT_EQ(get("out"), "title HD Orvanel42 simulator COM2:115200\nmark 312 1\n");
    EXPECT_EQ(get("err"), "");
    put("a.scn", "port 9\n");
    EXPECT_EQ(run({"--realtime", "--dir", "kept", "a.scn"}), 2);
    EXPECT_EQ(get("err"), "a.scn:1: error: 9 is outside 0 to 8; the form is: port N\n");
}

TEST_F(ScenarioProgram, tells_what_the_folder_refuses) {
    std::filesystem::create_directories(folder / "kept/simulator.ini");
    put("a.scn", "time\n");
    EXPECT_EQ(run({"--dir", "kept", "a.scn"}), 2);
    EXPECT_EQ(get("err"), "orvanel42-headless: error: kept/simulator.ini: not a plain file\n");
    EXPECT_EQ(get("out"), "");

    std::filesystem::remove(folder / "kept/simulator.ini");
    put("kept/Orvanel42.bin", "");
    std::filesystem::permissions(folder / "kept/Orvanel42.bin", std::filesystem::perms(0444));
    put("a.scn", program_image);
    EXPECT_EQ(run({"--dir", "kept", "a.scn"}), 2);
    EXPECT_EQ(get("out"), "message \"Error: HD Orvanel42 simulator\" \"cannot save "
                          "kept/Orvanel42.bin: write-protected\"\n");
    EXPECT_TRUE(get("kept/simulator.ini").starts_with("[Orvanel42]\ncom=none\n"));
}

TEST_F(ScenarioProgram, a_screen_is_compared_and_updated) {
    put("a.scn", "expect-screen \"my screen.png\"\n");
    EXPECT_EQ(run({"a.scn"}), 1);
    EXPECT_NE(get("err").find("--update-missing"), std::string::npos);
    EXPECT_TRUE(std::filesystem::exists(folder / "my screen.actual.png"));
    EXPECT_EQ(run({"--update-missing", "a.scn"}), 0);
    EXPECT_EQ(run({"a.scn"}), 0);

    put("a.scn", "send 1B \"DI\"\nsettle\nexpect-screen \"my screen.png\"\n");
    EXPECT_EQ(run({"--update-missing", "--out", "failed/here", "a.scn"}), 1);
    EXPECT_TRUE(std::filesystem::exists(folder / "failed/here/my screen.diff.png"));
    EXPECT_EQ(run({"--update", "a.scn"}), 0);
    EXPECT_EQ(run({"a.scn"}), 0);
    EXPECT_FALSE(std::filesystem::exists(folder / "my screen.diff.png"));
}

TEST_F(ScenarioProgram, an_awaited_screen_is_updated_at_the_end_of_its_time) {
    put("a.scn", "send 1B \"X\" 05 \"#DI\"\nawait-screen a.png within 600\ntime\n");
    EXPECT_EQ(run({"a.scn"}), 1);
    EXPECT_EQ(run({"--update-missing", "a.scn"}), 0) << get("err");
    EXPECT_EQ(get("out"), "time 605\n");
    EXPECT_EQ(run({"a.scn"}), 0) << get("err");
    EXPECT_EQ(get("out"), "time 515\n");
    const std::string dark = get("a.png");

    // What shows in time is as it should be.
    put("a.scn", "send 1B \"X\" 05\nawait-screen a.png within 600\n");
    EXPECT_EQ(run({"--update-missing", "a.scn"}), 1);
    EXPECT_EQ(get("a.png"), dark);
    EXPECT_EQ(run({"--update", "a.scn"}), 0) << get("err");
    EXPECT_NE(get("a.png"), dark);
    put("a.png", "no picture");
    EXPECT_EQ(run({"--update-missing", "a.scn"}), 1);
    EXPECT_EQ(run({"--update", "a.scn"}), 0) << get("err");
    EXPECT_EQ(run({"a.scn"}), 0) << get("err");
}

TEST_F(ScenarioProgram, several_scenarios_speak_in_the_order_of_the_command_line) {
    put("long.scn", "wait 3000000\ntime");
    put("short.scn", "time\nexpect-answers 00");
    EXPECT_EQ(run({"--jobs", "3", "long.scn", "short.scn", "missing.scn"}), 2);
    EXPECT_EQ(get("out"), "time 3000005\ntime 5\n");
    EXPECT_EQ(get("err"), "short.scn:2: error: other answers: 1 byte expected, 0 there, different "
                          "from byte 1 on\n    expected 00\n    actual   (no byte)\nmissing.scn: "
                          "error: can't be opened: No such file or directory\n"
                          "orvanel42-headless: 2 of 3 scenarios failed\n");
}

TEST_F(ScenarioProgram, a_process_that_dies_is_a_failed_case) {
    put("long.scn", "time\nwait 1000000000");
    put("short.scn", "time");
    const pid_t program = start({"--junit", "results.xml", "long.scn", "short.scn"});
    const std::string children =
        "/proc/" + std::to_string(program) + "/task/" + std::to_string(program) + "/children";
    int child = 0;
    for (int i = 0; i < 500 && !(std::ifstream(children) >> child); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
    ASSERT_GT(child, 0);
    kill(child, SIGKILL);
    EXPECT_EQ(status_of(program), 1);
    EXPECT_NE(get("out").find("time 5\n"), std::string::npos);
    EXPECT_NE(get("results.xml").find("tests=\"2\" failures=\"1\" errors=\"0\""),
              std::string::npos);
    EXPECT_NE(get("results.xml").find("died of a signal"), std::string::npos);
}

TEST_F(ScenarioProgram, another_program_drives_it_through_two_pipes) {
    for (const char* mode : {"--jobs=1", "--realtime"}) {
        std::array<int, 2> to{};
        std::array<int, 2> from{};
        ASSERT_EQ(pipe(to.data()) + pipe(from.data()), 0);
        const pid_t pid = fork();
        if (pid == 0) {
            dup2(to[0], STDIN_FILENO);
            dup2(from[1], STDOUT_FILENO);
            for (const int fd : {to[0], to[1], from[0], from[1]})
                close(fd);
            execl(ORVANEL_PROGRAM, ORVANEL_PROGRAM, mode, nullptr);
            _exit(99);
        }
        close(to[0]);
        close(from[1]);
        for (int i = 0; i < 3; ++i) {
            const std::string half = identify + "await-answers FF";
            ASSERT_EQ(write(to[1], half.data(), half.size()), std::ssize(half));
            ASSERT_EQ(write(to[1], "\nanswers\n", 9), 9);
            std::array<char, 100> line{};
            ASSERT_EQ(read(from[0], line.data(), line.size()), 32) << mode;
            EXPECT_EQ(line.data(), "answers" + identity.substr(3));
        }
        close(to[1]);
        EXPECT_EQ(status_of(pid), 0);
        close(from[0]);
    }
}

TEST_F(ScenarioProgram, a_signal_ends_it_in_order) {
    put("long.scn", "wait 1000000000");
    for (const char* mode : {"--jobs=1", "--realtime"}) {
        put("long.scn", "time\nwait 1000000000");
        const pid_t pid = start({mode, "long.scn"});
        for (int i = 0; i < 30'000 && get("out").empty(); ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds{10});
        kill(pid, SIGTERM);
        EXPECT_EQ(status_of(pid), 1);
        EXPECT_EQ(get("err"), "long.scn:2: error: the scenario was stopped before its end\n");
        std::filesystem::remove(folder / "out");
    }
}

TEST_F(ScenarioProgram, a_signal_ends_a_scenario_that_takes_no_time) {
    // Each of the files includes the next one four times, a thousand million lines in all.
    for (int i = 0; i < 15; ++i) {
        const std::string next = "include " + std::to_string(i + 1) + ".scn\n";
        put(std::to_string(i) + ".scn", (i == 0 ? "time\n" : "") + next + next + next + next);
    }
    put("15.scn", "rts\n");
    const pid_t pid = start({"0.scn"});
    while (get("out").empty())
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    kill(pid, SIGTERM);
    EXPECT_EQ(status_of(pid), 1);
    EXPECT_NE(get("err").find("stopped before its end"), std::string::npos) << get("err");
}

TEST_F(ScenarioProgram, real_time_speaks_the_same_language) {
    put("feed", "#GR0,0,239,127;");
    put("a.scn",
        "feed feed\nwait 120\nsettle\nscreen a.png\nreset\nsettle\nsend \"#GR0,0,239,127;\"\n"
        "await-screen a.png\nexpect-answers \"\"\nsettle 10\n");
    EXPECT_EQ(run({"--realtime", "a.scn"}), 3);
    EXPECT_NE(get("err").find("a.scn:10: error: the module was not quiet"), std::string::npos);
}

}  // namespace orvanel
