// When things happen in module time: moves, the window's timer, waits, the line.

#include "tests/host/platform/headless/program_support.h"

#include <string>

namespace orvanel {

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

}  // namespace orvanel
