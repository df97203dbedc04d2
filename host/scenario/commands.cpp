#include "host/scenario/commands.h"

#include "base/files.h"
#include "base/hex.h"
#include "base/nearest.h"
#include "base/quoting.h"
#include "base/words.h"
#include "firmware/core/ground/backlight.h"
#include "firmware/core/ground/requests.h"
#include "firmware/core/roof/device.h"
#include "firmware/store/ground/macro.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/finger.h"
#include "host/bridge/bridge.h"
#include "host/import/picture_import.h"
#include "host/program/demo.h"
#include "host/program/settings.h"
#include "host/scenario/answers.h"
#include "host/scenario/expectations.h"
#include "host/scenario/hints.h"
#include "host/scenario/module_tables.h"
#include "host/scenario/named_files.h"
#include "host/scenario/received.h"
#include "host/scenario/report.h"
#include "host/scenario/sources.h"
#include "host/scenario/text_commands.h"
#include "host/scenario/touch_commands.h"
#include "host/scenario/waits.h"
#include "host/scenario/window_commands.h"
#include "host/scenario/world.h"
#include "host/trace/places.h"
#include "host/window/ground/title.h"
#include "host/window/roof/menu_command.h"
#include "link/feeds/feeds.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"
#include "link/roof/com_port.h"

#include <algorithm>
#include <vector>

namespace orvanel {

constinit std::optional<int> leading_port{};

namespace {

constexpr std::int64_t language_version = 1;
constexpr std::int64_t max_version = 1000;
constexpr std::int64_t max_wait_ms = 1'000'000'000;
constexpr std::int64_t settle_ms = 60'000;
constexpr std::int64_t await_ms = 5000;
constexpr std::int64_t required = -1;
constexpr std::int64_t max_id = 0xFFFF;  // of a menu item or a control
constexpr std::int64_t min_pixel = -0x8000, max_pixel = 0x7FFF;

constinit bool no_command_before = false;

// What the commands do, in the order of the table.

void check_version(const Arguments& a) {
    if (!no_command_before) {
        report_fault(wrong_line, "'scenario' is only for the first line");
    } else if (a.number != language_version) {
        report_fault(wrong_line, "version " + std::to_string(a.number) +
                                     " of the scenario language is unknown; this is version " +
                                     std::to_string(language_version));
    }
}

void send(const Arguments& a) {
    // The ring would drop what doesn't fit, and the scenario would test something else than it
    // says.
    const auto room = static_cast<std::size_t>(pipe_size - rx_count());
    if (a.bytes.size() > room) {
        report_fault(wrong_line, std::to_string(a.bytes.size()) +
                                     " bytes don't fit, rx_pipe has room for " +
                                     std::to_string(room) + "; 'settle' first, or 'feed' a file");
        return;
    }
    auto_macro_mode.store(0);
    rx_pipe_put_block(a.bytes, {.origin = ByteOrigin::companion,
                                .number = static_cast<std::uint32_t>(scenario_line)});
}

void print_answers(const Arguments& /*a*/) { print_line("answers" + hex_of(take_answers())); }

void port(const Arguments& a) {
    const int number = static_cast<int>(a.number);
    if (com_port.load() < 0)
        leading_port = number;
    else
        choose_port(number);
}

void protocol(const Arguments& a) { choose_framing(a.number != 0); }

/// False, and told, in real time.
bool has_simulated_line() {
    if (!line_is_simulated()) report_fault(wrong_line, "in real time there is no simulated line");
    return line_is_simulated();
}

void line(const Arguments& a) {
    if (!has_simulated_line()) return;
    hint_on_line(a.bytes.size());
    line_receive(a.bytes);
}

void print_line_sent(const Arguments& /*a*/) {
    if (has_simulated_line()) print_line("line-answers" + hex_of(take_line_sent()));
}

void cts(const Arguments& a) {
    if (has_simulated_line()) set_line_cts(a.number != 0);
}

void print_rts(const Arguments& /*a*/) { print_line(line_rts() ? "rts 1" : "rts 0"); }

/// start_feed_file is silent about a file that can't be read, but here silence helps nobody.
bool can_be_read(const std::string& path) {
    const std::string fault = unreadable(path);
    if (!fault.empty()) report_fault(wrong_line, path + ": " + fault);
    return fault.empty();
}

/// In quotes, which whoever opens it takes off: the name may begin with one of its own.
std::string quoted(const std::string& path) { return '"' + path + '"'; }

void open(const Arguments& a) {
    if (can_be_read(a.path))
        open_feed(quoted(a.path), static_cast<int>(a.x), static_cast<int>(a.y));
}

void feed(const Arguments& a) {
    if (!can_be_read(a.path)) return;
    start_feed_file(quoted(a.path));
    note_feed(feed_number(), a.path, true, scenario_line);
}

void demo(const Arguments& /*a*/) {
    start_demo_feed();
    note_feed(feed_number(), "the demo", false, scenario_line);
}

void touch(const Arguments& a) { put_finger(static_cast<int>(a.x), static_cast<int>(a.y)); }

void lift(const Arguments& /*a*/) { lift_finger(); }

void print_area_at(const Arguments& a) {
    const bool hand = touch_area_at(static_cast<int>(a.x), static_cast<int>(a.y));
    print_line(hand ? "area-at 1" : "area-at 0");
}

void reset(const Arguments& a) { request_restart(static_cast<std::uint8_t>(a.number)); }

void wait_ms(const Arguments& a) { wait_for_time(a.number); }

void settle(const Arguments& a) { wait_for_quiet(a.number); }

void print_time(const Arguments& /*a*/) { print_line("time " + std::to_string(clock_us() / 1000)); }

void print_ports(const Arguments& /*a*/) {
    const std::uint8_t lines = output_port.load();
    print_line("ports" + hex_of({&lines, 1}));
}

void print_backlight(const Arguments& /*a*/) {
    print_line("backlight " + std::to_string(backlight_light.load().backlight_level));
}

void screen(const Arguments& a) {
    note_picture(a.path);
    save_screen(a.path, a.shown);
}

void expect_answers_now(const Arguments& a) {
    hint_on_answers(a.bytes.size());
    expect_answers(a.bytes);
}

void expect_screen_now(const Arguments& a) {
    hint_on_screen(a.path, a.shown);
    expect_screen(a.path, a.shown, a.part);
}

void allow(const Arguments& a) {
    const std::string fault = allow_next(a.word);
    if (!fault.empty()) report_fault(wrong_line, fault);
}

void print_screen_hash(const Arguments& a) {
    constexpr std::uint64_t start = 0xCBF29CE484222325U, prime = 0x100000001B3U;  // FNV-1a
    std::uint64_t hash = start;
    for (const std::uint8_t byte : take_glass(a.shown))
        hash = (hash ^ byte) * prime;
    print_line("screen-hash " + hex_digits(static_cast<std::uint32_t>(hash >> 32), 8) +
               hex_digits(static_cast<std::uint32_t>(hash), 8));
}

void print_dots(const Arguments& a) {
    print_line("dots " + std::to_string(screen_width) + ' ' + std::to_string(screen_height) + ' ' +
               hex_of(take_glass(a.shown), ""));
}

void include(const Arguments& a) { include_scenario(a.path); }

void await_received(const Arguments& a) { wait_for_received(a.bytes, a.within_ms); }

void set_line_speed(const Arguments& a) {
    if (has_simulated_line()) set_line_speed_baud(static_cast<std::int32_t>(a.number));
}

void expect_line_now(const Arguments& a) {
    if (has_simulated_line()) expect_line(a.bytes);
}

void await_line(const Arguments& a) {
    if (has_simulated_line()) wait_for_line_bytes(a.bytes, a.within_ms);
}

void await_answers(const Arguments& a) { wait_for_answers(a.bytes, a.within_ms); }

void await_screen(const Arguments& a) {
    ScreenExpectation expectation{a.path, a.shown, a.part, {}};
    if (load_expectation(expectation)) wait_for_screen(expectation, a.within_ms);
}

void print_setting(const Arguments& a) {
    if (const auto line = setting_line(a.word))
        print_line("setting " + *line);
    else
        report_fault(wrong_line, "there is no setting " + in_quotes(a.word) +
                                     is_it(a.word, setting_names()) + "; the settings are " +
                                     setting_keys());
}

void print_link(const Arguments& /*a*/) {
    std::string text = "link";
    for (const auto* total : {&line_bytes_in, &line_bytes_out, &frames_good, &frames_bad})
        text += " " + std::to_string(total->load());
    text += module_selected.load() ? " selected" : " unselected";
    const std::uint64_t dropped = answer_bytes_dropped.load();
    print_line(dropped == 0 ? text : text + " dropped " + std::to_string(dropped));
}

void print_baud(const Arguments& /*a*/) { print_line("baud " + std::to_string(line_speed())); }

void bridge(const Arguments& a) { print_line("bridge " + hex_number(bridge_message(a.message))); }

void line_absent(const Arguments& a) {
    if (has_simulated_line()) set_line_absent(a.number != 0);
}

// The arguments, as the table names them.

constexpr Argument bytes{Take::bytes, 0, 0, required};
constexpr Argument path{Take::path, 0, 0, required};
constexpr Argument picture{Take::picture, 0, 0, required};
constexpr Argument pbm_file{Take::file, 0, 0, required, ".pbm"};
constexpr Argument bmp_file_name{Take::file, 0, 0, required, ".bmp"};
constexpr Argument pixel{Take::pixel, min_pixel, max_pixel, required};
constexpr Argument typed{Take::key, 0, 0, required};
constexpr Argument control{Take::control, 0, max_id, 1};
constexpr Argument png_file{Take::file, 0, 0, required, ".png"};
constexpr Argument shown{Take::shown, 0, 0, required};
constexpr Argument ms{Take::number, 0, max_wait_ms, required};
constexpr Argument ms_or_60000{Take::number, 0, max_wait_ms, settle_ms};
constexpr Argument dot{Take::dot, 0, 0, required};
constexpr Argument place{Take::place, 0, 255, 0};
constexpr Argument three_hex{Take::message, 0, 0, required};
constexpr Argument setting_name{Take::word, 0, 0, required};
constexpr Argument target{Take::target, 0, 255, required};
constexpr Argument part{Take::part, 0, 0, required};
constexpr Argument line_speed_baud{Take::number, 0, 1'000'000, required};
constexpr Argument module_text_or_none{Take::text, 0, 0, required};
constexpr Argument text{Take::text, 1, 0, required};
constexpr Argument where{Take::where, 0, 0, required};
constexpr Argument terminal_row{Take::number, 1, 16, required};
constexpr Argument lasting{Take::lasting, 0, max_wait_ms, 0};
constexpr Argument goal{Take::goal, 0, 255, required};
constexpr Argument within{Take::within, 0, max_wait_ms, await_ms};

constexpr Argument number(std::int64_t most) { return {Take::number, 0, most, required}; }

constexpr Argument number_or(std::int64_t otherwise, std::int64_t most) {
    return {Take::number, 0, most, otherwise};
}

// clang-format off
constexpr ScenarioCommand commands[]{
    {"scenario",       "1",                                {number(max_version)},   check_version},
    {"allow",          "NAME",                             {setting_name},           allow},
    {"include", "PATH", {path}, include},
    {"send",           "BYTES",                            {bytes},                  send},
    {"answers",        "",                                 {},                       print_answers},
    {"port",           "N",                                {number(max_com_ports)}, port},
    {"protocol",       "0 or 1",                           {number(1)},              protocol},
    {"line",           "BYTES",                            {bytes},                  line},
    {"line-answers",   "",                                 {},                       print_line_sent},
    {"line-speed", "BAUD", {line_speed_baud}, set_line_speed},
    {"cts",            "0 or 1",                           {number(1)},              cts},
    {"rts",            "",                                 {},                       print_rts},
    {"touch",          "X Y",                              {dot},                    touch},
    {"lift",           "",                                 {},                       lift},
    {"tap",            "\"LABEL\" or CODE or X Y [for MS]", {target, lasting},       tap_command},
    {"hold",           "\"LABEL\" or CODE or X Y",         {target},                hold_command},
    {"choose",         "\"LABEL\" or ROW",                 {target},                choose_command},
    {"drag",           "\"LABEL\" or BAR to VALUE or PERCENT %, or X Y to X Y", {target, goal}, drag_command},
    {"mouse-down",     "PX PY",                           {pixel},                 mouse_down_command},
    {"mouse-move",     "PX PY",                           {pixel},                 mouse_move_command},
    {"mouse-up",       "PX PY",                           {pixel},                 mouse_up_command},
    {"key",            "TEXT",                            {typed},                 key_command},
    {"menu",           "ID",                              {number(max_id)},       menu_item_command},
    {"drop",           "PATH PX PY",                      {path, pixel},           drop_command},
    {"open",           "PATH [X Y]",                       {path, place},            open},
    {"feed",           "PATH",                             {path},                   feed},
    {"demo",           "",                                {},                      demo},
    {"reset",          "[KIND]",                           {number_or(0, 3)},        reset},
    {"wait",           "MS",                               {ms},                     wait_ms},
    {"settle",         "[MS]",                             {ms_or_60000},            settle},
    {"time",           "",                                 {},                       print_time},
    {"screen",         "FILE [main or flash]",             {picture, shown},         screen},
    {"window",         "FILE.png",                        {png_file},              save_window_command},
    {"expect-answers", "BYTES",                            {bytes},                  expect_answers_now},
    {"expect-line",    "BYTES",                            {bytes},                  expect_line_now},
    {"expect-screen", "FILE [main or flash] [in X1 Y1 X2 Y2] [except X1 Y1 X2 Y2]...", {picture, shown, part}, expect_screen_now},
    {"screen-hash", "[main or flash]", {shown}, print_screen_hash},
    {"dots",           "[main or flash]",                  {shown},                 print_dots},
    {"await-answers",  "BYTES [within MS]",                {bytes, within},          await_answers},
    {"await-line",     "BYTES [within MS]",                {bytes, within},          await_line},
    {"await-screen", "FILE [main or flash] [in X1 Y1 X2 Y2] [except X1 Y1 X2 Y2]... [within MS]", {picture, shown, part, within}, await_screen},
    {"await-received", "BYTES [within MS]", {bytes, within}, await_received},
    {"ports",          "",                                {},                      print_ports},
    {"backlight",      "",                                {},                      print_backlight},
    {"title",          "",                                {},                      print_title},
    {"area-at",        "X Y",                              {dot},                    print_area_at},
    {"expect-text",    "\"TEXT\" [in X1 Y1 X2 Y2] [near \"TEXT\"] [whole] [in any phase]", {text, where}, expect_text_command},
    {"expect-no-text", "\"TEXT\" [in X1 Y1 X2 Y2] [near \"TEXT\"] [whole] [in any phase]", {text, where}, expect_no_text_command},
    {"await-text",     "\"TEXT\" [in X1 Y1 X2 Y2] [near \"TEXT\"] [whole] [in any phase] [within MS]", {text, where, within}, await_text_command},
    {"expect-terminal", "ROW \"TEXT\"",                   {terminal_row, module_text_or_none}, expect_terminal_command},
    {"texts",          "[main or flash]",                 {shown},                 print_texts},
    {"areas",          "",                                {},                      print_areas},
    {"bars",           "",                                {},                      print_bars},
    {"menu-rows",      "",                                {},                      print_menu_rows},
    {"link",           "",                                 {},                      print_link},
    {"baud",           "",                                 {},                      print_baud},
    {"line-absent",    "0 or 1",                           {number(1)},             line_absent},
    {"panel",          "",                                {},                      print_panel},
    {"cursor",         "",                                {},                      print_cursor},
    {"dialog",         "CONTROL [VALUE] or close",        {control},               dialog_command},
    {"clipboard",      "FILE.bmp",                        {bmp_file_name},         save_clipboard_command},
    {"outline",        "FILE.pbm",                        {pbm_file},              save_outline_command},
    {"geometry",       "",                                {},                      print_geometry},
    {"setting",        "KEY",                              {setting_name},          print_setting},
    {"mark",           "ID",                              {number(max_id)},       print_mark},
    {"bridge",         "NUMBER FIRST SECOND",             {three_hex},             bridge},
};
// clang-format on

void report_unknown(std::string_view name) {
    const std::string message = "unknown command " + in_quotes(name);
    if (name.starts_with('#') || name.starts_with('\x1B'))
        return report_fault(
            wrong_line, message + "; a stream of the module's commands is played by 'feed FILE'");
    std::vector<std::string_view> names;
    for (const ScenarioCommand& command : commands)
        names.push_back(command.name);
    report_fault(wrong_line, message + is_it(name, names));
}

const ScenarioCommand* find_command(std::string_view name) {
    const auto* command = std::find_if(std::begin(commands), std::end(commands),
                                       [name](const ScenarioCommand& c) { return c.name == name; });
    return command == std::end(commands) ? nullptr : command;
}

bool is_path(Take take) {
    return take == Take::path || take == Take::picture || take == Take::file;
}

FileUse use_of(const ScenarioCommand& command) {
    if (command.run == include) return FileUse::included;
    return command.run == open || command.run == drop_command ? FileUse::opened : FileUse::plain;
}

void run_command(const ScenarioCommand& command, std::string_view rest) {
    const std::string name(command.name);
    Arguments values{};
    std::string fault;
    for (const Argument& a : command.arguments)
        if (fault.empty()) fault = take_argument(rest, a, values);
    if (fault.empty() && !trimmed(rest).empty()) fault = in_quotes(trimmed(rest)) + " is too much";
    if (!fault.empty()) {
        const std::string usage(command.usage);
        report_fault(wrong_line,
                     fault + "; the form is: " + name + (usage.empty() ? "" : " ") + usage);
        return;
    }
    if (fault = output_clash({values.path, use_of(command)}); !fault.empty())
        return report_fault(wrong_line, fault);
    note_command(command.name);
    command.run(values);
}

}  // namespace

std::span<const ScenarioCommand> scenario_commands() { return commands; }

NamedFile file_in_line(std::string_view line) {
    std::string_view rest = trimmed(line);
    const ScenarioCommand* command = find_command(take_word(rest));
    if (command == nullptr || !is_path(command->arguments.front().take)) return {};
    Arguments values{};
    if (!take_argument(rest, command->arguments.front(), values).empty()) return {};
    return {values.path, use_of(*command)};
}

bool run_scenario_line(std::string_view line, bool is_first) {
    std::string_view rest = trimmed(line);
    if (rest.empty() || rest.front() == ';') return false;
    no_command_before = is_first;
    if (rest.find('\0') != std::string_view::npos) {
        report_fault(wrong_line, "there is a NUL byte in the line");
        return true;
    }
    const std::string_view name = take_word(rest);
    const ScenarioCommand* command = find_command(name);
    if (command == nullptr)
        report_unknown(name);
    else
        run_command(*command, rest);
    return true;
}

}  // namespace orvanel
