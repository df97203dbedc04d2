// Scenarios through the program itself: what it prints, when things happen in module time, how it
// ends.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <signal.h>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace orvanel {

namespace {

/// A fresh folder for each test, in which the program runs.
class ScenarioProgram : public testing::Test {
  protected:
    std::filesystem::path folder =
        std::filesystem::path(testing::TempDir()) / ("scenario" + std::to_string(getpid()));

    void SetUp() override { std::filesystem::create_directories(folder); }
    void TearDown() override { std::filesystem::remove_all(folder); }

    void put(const std::string& name, const std::string& text) const {
        std::ofstream(folder / name, std::ios::binary) << text;
    }

    std::string get(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(folder / name, std::ios::binary).rdbuf();
        return text.str();
    }

    /// Starts the program with standard streams from and to files of the folder.
    pid_t start(std::vector<std::string> words) const {
        std::fflush(stdout);
        const pid_t pid = fork();
        if (pid != 0) return pid;
        std::filesystem::current_path(folder);
        if (std::freopen(std::filesystem::exists("in") ? "in" : "/dev/null", "r", stdin) ==
                nullptr ||
            std::freopen("out", "w", stdout) == nullptr ||
            std::freopen("err", "w", stderr) == nullptr)
            _exit(99);
        std::vector<char*> arguments{const_cast<char*>(ORVANEL_PROGRAM)};
        for (std::string& word : words)
            arguments.push_back(word.data());
        arguments.push_back(nullptr);
        execv(ORVANEL_PROGRAM, arguments.data());
        _exit(99);
    }

    static int status_of(pid_t pid) {
        int ending = 0;
        waitpid(pid, &ending, 0);
        return WIFEXITED(ending) ? WEXITSTATUS(ending) : -WTERMSIG(ending);
    }

    int run(const std::vector<std::string>& words) const { return status_of(start(words)); }

    /// Runs a scenario of one file and gives what it prints.
    std::string printed(const std::string& scenario, int expected_status = 0) const {
        put("a.scn", scenario);
        EXPECT_EQ(run({"a.scn"}), expected_status) << get("err");
        return get("out");
    }
};

const std::string identify = "send 1B \"?\"\n";
const std::string identity = " FF FF 48 F0 00 80 00 01 42\n";

/// The last field of each trace line of a command, and touches, answers and resets as they stand.
std::string verdicts(const std::string& trace) {
    std::istringstream lines(trace);
    std::string all;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t bar = line.rfind("| ");
        all += line.substr(bar == std::string::npos ? line.find(' ') + 1 : bar + 2) + '\n';
    }
    return all;
}

}  // namespace

TEST_F(ScenarioProgram, begins_at_the_end_of_the_first_move) {
    EXPECT_EQ(printed("scenario 1\n\n ; a comment\r\ntime\r\nwait 0\ntime\nwait 3\ntime"),
              "time 5\ntime 5\ntime 8\n");
}

TEST_F(ScenarioProgram, a_byte_costs_ten_microseconds) {
    // Quiet from 5 ms + 10 us a byte on; the idle moves of 5 ms count from there.
    const auto settled = [this](int bytes) {
        return printed("send \"" + std::string(static_cast<std::size_t>(bytes), 'x') +
                       "\"\nsettle\ntime");
    };
    EXPECT_EQ(settled(99), "time 25\n");
    EXPECT_EQ(settled(100), "time 26\n");
    EXPECT_EQ(settled(80000), "time 865\n") << "the pipe holds so many";
}

TEST_F(ScenarioProgram, the_window_timer_goes_before_the_scenario) {
    put("feed", "xyz");
    printed("feed feed\nwait 94\nsettle 0", 3);
    EXPECT_NE(get("err").find("0 wait in rx_pipe, 3 in the feed"), std::string::npos) << get("err");
    printed("feed feed\nwait 95\nsettle 0", 3);
    EXPECT_NE(get("err").find("3 wait in rx_pipe, 0 in the feed"), std::string::npos) << get("err");
    // At 100 ms the bytes come and the tick, so the next read sleeps 5 ms before it takes them.
    EXPECT_EQ(printed("feed feed\nsettle\ntime"), "time 125\n");
    put("one", "x");
    EXPECT_EQ(printed("feed one\nsettle\ntime"), "time 125\n");
}

TEST_F(ScenarioProgram, opens_pictures_and_takes_the_messages_of_a_companion) {
    put("wide.blh", "\xF1\x01" + std::string(31, '\xFF'));
    put("dot.blh", "\x01\x01\x80");
    EXPECT_EQ(printed("open wide.blh\nopen dot.blh 10 20\nsettle\nbridge 406 481B 0A140A55\n"
                      "bridge 401 14 0\nsettle\nbridge 414 0 0\nbridge 418 0 0\nbridge 418 0 0\n"
                      "bridge 41E 0 0\nopen dot.blh 256",
                      2),
              "message \"Error: HD Orvanel42 simulator\" \"The Picture is to big (max. 240x128 "
              "dots) !\"\nbridge 0\nbridge 0\nbridge 8\nbridge A4C551B\nbridge 80010114\n"
              "bridge FFFFFFFF\n");
}

TEST_F(ScenarioProgram, what_is_copied_from_the_glass_can_be_opened_again) {
    put("a.scn", "send \"#TA#GD0,0,99,99,#RS120,3,170,44,\"\nsettle\nscreen a.png\n"
                 "menu 271\nmenu 150\nclipboard c.bmp\nsend \"#DL\"\nsettle\n"
                 "open c.bmp\nsettle\nscreen b.png\n");
    ASSERT_EQ(run({"a.scn"}), 0) << get("err");
    EXPECT_EQ(get("a.png"), get("b.png"));
}

TEST_F(ScenarioProgram, settle_looks_a_last_time_at_its_end) {
    EXPECT_EQ(printed("settle 20\ntime"), "time 25\n");
    EXPECT_EQ(printed("send 78\nsettle 20\ntime", 3), "time 25\n");
    EXPECT_EQ(get("err"), "a.scn:2: error: the module was not quiet within 20 ms: no byte was "
                          "delivered for 19 ms, 0 wait in rx_pipe, 0 in the feed, "
                          "0 on the line\n");
    // 300 ms of ESC X are quiet, but not while a byte waits after them.
    EXPECT_EQ(printed("send 1B \"X\" 03\nwait 1\nsettle 100\ntime"), "time 105\n");
    // The tick during the wait makes the read of that byte sleep 5 ms.
    EXPECT_EQ(printed("send 1B \"X\" 03 \"x\"\nsettle\ntime"), "time 330\n");
}

TEST_F(ScenarioProgram, an_await_takes_what_it_matched_and_fails_at_once) {
    EXPECT_EQ(printed(identify + "await-answers FF FF\ntime\nanswers\nanswers"),
              "time 10\nanswers" + identity.substr(6) + "answers\n");
    EXPECT_EQ(printed(identify + "await-answers FF 00\ntime\nanswers", 1),
              "time 10\nanswers" + identity);
    EXPECT_EQ(printed("await-answers FF within 40\ntime\nawait-answers\n" + identify +
                          "await-answers FF within 0",
                      1),
              "time 45\n");
    EXPECT_EQ(printed("wait 2\n" + identify + "await-answers FF FF within 3\ntime", 1),
              "time 10\n");
}

TEST_F(ScenarioProgram, an_await_begun_within_a_move_is_tested_at_its_end) {
    EXPECT_EQ(printed(identify + "wait 2\nawait-answers FF\ntime"), "time 10\n");
    EXPECT_EQ(printed("screen a.pbm\nsend 1B \"DS\"\nsettle\nawait-screen a.pbm within 10\ntime\n"
                      "send 1B \"DL\"\nawait-screen a.pbm\ntime",
                      1),
              "time 35\ntime 40\n");
}

TEST_F(ScenarioProgram, the_line_takes_its_turn_each_5_ms_behind_the_tick) {
    EXPECT_EQ(
        printed("port 1\nwait 2\nline 12 01 50 63\nwait 2\nline-answers\nwait 1\nline-answers"),
        "line-answers\nline-answers 06 12 03 40 40 C8 5D\n");
    // The limit of 50 ms runs out in the tick at 100 ms, before the turn at that time.
    const std::string limited = "port 1\nline 12 03 44 40 05 9E\nwait 5\nline-answers\n";
    EXPECT_EQ(printed(limited + "wait 80\nline 12 01\nwait 5\nline 50 63\nwait 5\nline-answers"),
              "line-answers 06\nline-answers\n");
    // 67 bytes of frames to a turn, and the answers of the turn before in plain bytes.
    EXPECT_EQ(printed("port 1\nline \"" + std::string(67, 'x') +
                      "\" 12 01 3F 52\nwait 5\n"
                      "line-answers\nwait 5\nline-answers"),
              "line-answers\nline-answers 06\n");
    EXPECT_EQ(printed("protocol 0\nport 1\nline \"" + std::string(4000, 'x') +
                      "#?\"\nwait 49\nline-answers\nwait 1\nline-answers"),
              "line-answers\nline-answers FF FF 48 F0 00 80 00 01 42\n");
}

TEST_F(ScenarioProgram, settle_waits_for_the_line_though_no_byte_is_delivered) {
    EXPECT_EQ(printed("port 1\nline \"" + std::string(670, 'x') + "\"\nsettle\ntime"), "time 55\n");
}

TEST_F(ScenarioProgram, the_line_shows_rts_speed_and_what_has_passed) {
    EXPECT_EQ(printed("rts\nbaud\nlink\nport 1\nrts\nline 12 01 3F 52 11 00 00\nwait 5\nlink\n"
                      "line 12 03 41 44 07 A1\nsend \"#+2;\"\nsettle\nlink\nbaud\nport 0\nbaud"),
              "rts 0\nbaud 0\nlink 0 0 0 0 selected\nrts 1\n"
              "link 7 2 1 1 selected\nlink 13 3 2 1 unselected\nbaud 4800\nbaud 0\n");
    // ESC X holds the module while the pipe fills; a byte read below the low mark raises RTS.
    const std::string block = "line \"" + std::string(13000, 'x') + "\"\nwait 20\nrts\n";
    EXPECT_EQ(printed("protocol 0\nport 1\nsend 1B \"X\" 05\nwait 5\n" + block + block + block +
                      block + block + "settle\nrts"),
              "rts 1\nrts 1\nrts 1\nrts 1\nrts 0\nrts 1\n");
    EXPECT_EQ(printed("protocol 0\nport 1\nsend 1B \"X\" 05\nwait 5\n" + block + block + block +
                      block + block + "reset\nsettle\nrts\nline \"x\"\nsettle\nrts"),
              "rts 1\nrts 1\nrts 1\nrts 1\nrts 0\nrts 0\nrts 1\n");
    // The queue holds 16384 bytes.
    EXPECT_EQ(printed("protocol 0\nport 1\nline \"" + std::string(16383, 'x') +
                      "\" 1B \"?\"\nline \"?\"\nsettle\nline \"?\"\nsettle\nline-answers"),
              "line-answers FF FF 48 F0 00 80 00 01 42\n");
}

TEST_F(ScenarioProgram, a_trace_of_the_line_tells_plain_bytes_from_frames) {
    put("a.scn", "protocol 0\nport 1\nwait 10\nline 11\nwait 20\nline 1B \"?\"\nwait 30\n"
                 "protocol 1\nline 12 01 \"S\" 66\nwait 30\n");
    ASSERT_EQ(run({"--trace", "t", "--trace-layers", "wire", "a.scn"}), 0) << get("err");
    EXPECT_EQ(get("t"), "0.000 reset 0\n"
                        "20.000 wire in 11 | plain bytes | ok\n"
                        "40.000 wire in 1B 3F | plain bytes | ok\n"
                        "45.000 wire out FF FF 48 F0 00 80 00 01 42 | plain bytes | ok\n"
                        "70.000 wire in 12 01 53 66 | control frame S | ok\n"
                        "70.000 wire out 06 | acknowledged | ok\n"
                        "70.000 wire out 11 00 11 | answer frame with 0 bytes | ok\n");
}

TEST_F(ScenarioProgram, answers_that_nobody_takes_are_counted_and_remarked) {
    std::string copies;
    for (int i = 0; i < 21; ++i)
        copies += "#UH0,0,239,127,";  // 3847 bytes each, and 80000 have room
    put("a.scn", "send \"#AH0,0,20,20," + copies + "\"\nsettle\nlink\ntouch 5 5\nsettle\nlink\n");
    EXPECT_EQ(run({"--trace", "t", "a.scn"}), 0) << get("err");
    EXPECT_EQ(get("out"), "link 0 0 0 0 selected dropped 787\nlink 0 0 0 0 selected dropped 793\n");
    const std::string trace = get("t");
    const std::string words = " | an answer was dropped, nobody takes them [answer-dropped]\n";
    EXPECT_NE(trace.find(" | Hardcopy of the area to the line" + words), std::string::npos)
        << trace;
    EXPECT_NE(trace.find(" | touch" + words), std::string::npos) << trace;
}

TEST_F(ScenarioProgram, a_port_that_is_absent_is_told) {
    EXPECT_EQ(
        printed("line-absent 1\nport 3\nrts\nline-absent 0\nport 3\nrts\nline-absent 1\nrts"),
        "message \"Error: HD Orvanel42 simulator\" \"cannot open COM3 !\"\nrts 0\nrts 1\nrts 1\n");
}

TEST_F(ScenarioProgram, bytes_of_the_line_are_awaited_as_answers_are) {
    const std::string asked = "port 1\nprotocol 0\n" + identify;
    EXPECT_EQ(printed(asked + "await-line FF FF\ntime\nline-answers\nline-answers"),
              "time 10\nline-answers" + identity.substr(6) + "line-answers\n");
    EXPECT_EQ(printed(asked + "await-line FF 00\nline-answers", 1), "line-answers" + identity);
    EXPECT_NE(get("err").find("a.scn:4: error: other bytes on the line: "), std::string::npos);
    EXPECT_EQ(
        printed(asked + "await-line FF within 3\nexpect-line\nsettle\nexpect-line FF\nline-answers",
                1),
        "line-answers\n");
    put("a.scn", "line 41\n");
    EXPECT_EQ(run({"--realtime", "a.scn"}), 2);
    EXPECT_EQ(get("err"), "a.scn:1: error: in real time there is no simulated line\n");
}

TEST_F(ScenarioProgram, a_reset_drops_answers_and_input) {
    EXPECT_EQ(printed("screen a.pbm\n" + identify +
                      "wait 1\nreset 3\nsend \"#DS\"\nsettle\nanswers\nexpect-screen a.pbm"),
              "answers\n");
}

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

TEST_F(ScenarioProgram, a_trace_tells_what_the_module_did_in_silence) {
    put("feed", "\x1BGP\x05\x06");
    put("a.scn",
        "feed feed\nsettle\nsend \"ab\" 1B \"GD\" 0A 14 FF 05 \"#GD-1,20,300,50,\"\n"
        "send 1B \"%\" 1B \"GY\" 1B \"ZF\" 09 "
        "\"#ZV12,#MN7,#UE3,#UI0,0,9,#GZ17,1,#RR0,0,40,40,19,\"\n"
        "send \"#BA3,1,#ZZ5,1,#BR1,0,0,50,9,1,5,0,1,#BA1,9,#MD9,1,1,1,1,#ND0,0,0,a\" 0D \"#NA\"\n"
        "send \"#SB2,\" 01 02 1B \"ZL\" 00 00 \"a\\x80\" 00 \"#AT0,0,40,40,1,0,k\" 0D\nsettle\n"
        "touch 9 9\nwait 20\nlift\nsettle\nreset 2\nsettle\n");
    ASSERT_EQ(run({"--trace", "t", "a.scn"}), 0) << get("err");
    EXPECT_EQ(get("t").substr(0, get("t").find("feed")), "0.000 reset 0\n105.050 ");
    EXPECT_EQ(verdicts(get("t")),
              "reset 0\n"
              "ok\n"
              "ok\n"
              "255 clamped to 239 [clamped]\n"
              "a '-' was skipped [sign]; 300 taken as 44 [wrapped]\n"
              "undefined group, its letter went to the terminal; the groups are A, B, "
              "C, D, G, K, M, N, Q, R, S, T, U, X, Y, Z [no-group]\n"
              "undefined command, dropped; group G has D, P, R, V, W, Z "
              "[no-command]\n"
              "font 9 is missing [no-font]\n"
              "12 taken as 4 [wrapped]\n"
              "macro 7 is missing [no-macro]\n"
              "undefined command, dropped; group U has B, C, H, I, L, V, W, Z "
              "[no-command]\n"
              "ok\n"
              "picture 9 is missing [no-picture]\n"
              "17 taken as 1 [wrapped]\n"
              "border 19 is missing [no-border]\n"
              "bar 3 is not defined [no-bar]\n"
              "5 taken as 1 [wrapped]\n"
              "ok\n"
              "9 clamped to 5 [clamped]\n"
              "there is no process macro 9 [no-process]\n"
              "character 0x61 'a' is not in the font [no-glyph]\n"
              "ok\n"
              "ok\n"
              "answer 01 02\n"
              "characters 0x61 'a', 0x80 are not in the font [no-glyph]\n"
              "character 0x6B 'k' is not in the font [no-glyph]\n"
              "press 9 9 on key\n"
              "answer 1B 41 01 01\n"
              "release on key\n"
              "ok\n"
              "reset 2\n");
    for (const std::string line :
         {"126.650 companion 23 53 42 32 2C 01 02 | # S B 2 + 2 bytes | Send bytes | ok\n",
          "126.730 companion 1B 5A 4C 00 00 61 80 00 | ESC Z L 0 0 \"a\\x80\" | Draw a string, "
          "left "
          "aligned | characters 0x61 'a', 0x80 are not in the font [no-glyph]\n"})
        EXPECT_NE(get("t").find(line), std::string::npos) << get("t");
    // As objects, and as a failure of the run.
    ASSERT_EQ(run({"--trace-json", "t", "--strict", "a.scn"}), 1);
    EXPECT_NE(
        get("t").find(
            R"({"time":105.050,"source":"feed","file":"feed","line":1,"column":1,"scenario_line":1,"bytes":"1B47500506","count":5,)"
            R"("command":"ESC G P","parameters":[5,6],)"),
        std::string::npos)
        << get("t");
    EXPECT_TRUE(get("err").starts_with(
        "a.scn:3: warning: ESC G D 10 20 255 5: 255 clamped to 239 [clamped]\n"))
        << get("err");
    ASSERT_EQ(run({"--trace", "no/t", "a.scn"}), 2);
    EXPECT_EQ(get("err"), "a.scn: error: can't write no/t: No such file or directory\n");
}

TEST_F(ScenarioProgram, a_trace_names_the_macro_and_the_crc_of_an_image) {
    // A length of 9 bytes and no CRC, and normal macro 0, of one byte for the terminal.
    put("a.scn", "send 1B \"&E\" 00 00 02 00 \"W\" 09 00 1B \"&E\" 30 02 04 00 \"W\" 34 0E 01 00\n"
                 "send \"#MN0,#SI\"\nsettle\n");
    ASSERT_EQ(run({"--trace", "t", "a.scn"}), 0) << get("err");
    const std::string trace = get("t");
    EXPECT_NE(trace.find(" normal macro 0 FF | \"\\xFF\" | text for the terminal"),
              std::string::npos)
        << trace;
    EXPECT_NE(trace.find(" | the image holds CRC FFFF and has F072 [wrong-crc]\n"),
              std::string::npos)
        << trace;
}

TEST_F(ScenarioProgram, a_trace_parts_text_by_its_source_and_by_64_bytes) {
    put("feed", "abc");
    put("a.scn", "feed feed\nwait 95\nsend \"" + std::string(70, 'x') + "\"\nsettle\n");
    ASSERT_EQ(run({"--trace", "t", "a.scn"}), 0) << get("err");
    std::string hex;
    for (int i = 0; i < 64; ++i)
        hex += " 78";
    EXPECT_EQ(get("t"),
              "0.000 reset 0\n105.040 feed 61 62 63 | \"abc\" | text for the terminal | ok\n"
              "105.680 companion" +
                  hex + " | \"" + std::string(64, 'x') +
                  "\" | text for the terminal | ok\n105.730 companion" + hex.substr(0, 18) +
                  " | \"xxxxxx\" | text for the terminal | ok\n");
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
