// What a trace of a run tells.

#include "tests/host/platform/headless/program_support.h"

#include <sstream>
#include <string>

namespace orvanel {

namespace {

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

}  // namespace orvanel
