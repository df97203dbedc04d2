#include "firmware/core/roof/commands.h"

#include "firmware/core/ground/backlight.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/roof/device.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/border.h"
#include "firmware/raster/line.h"
#include "firmware/raster/picture.h"
#include "firmware/raster/refresh.h"
#include "firmware/raster/screen_store.h"
#include "firmware/store/roof/eeprom_command.h"
#include "firmware/store/roof/macro_commands.h"
#include "firmware/store/roof/timers.h"
#include "firmware/text/font.h"
#include "firmware/text/layout.h"
#include "firmware/text/terminal.h"
#include "firmware/touch/bars.h"
#include "firmware/touch/keys.h"
#include "firmware/touch/menu.h"
#include "firmware/touch/opener.h"
#include "firmware/touch/tracking.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace orvanel {

namespace {

void no_effect() {}

// clang-format off
constexpr Read none = Read::none, p = Read::p, pt1 = Read::pt1, pt2 = Read::pt2, rect = Read::rect,
               zoom = Read::zoom, bar = Read::bar, own = Read::own, own_raw = Read::own_raw,
               raw_string = Read::raw_string, raw_text = Read::raw_text,
               raw_picture = Read::raw_picture, raw_byte = Read::raw_byte,
               raw_bytes = Read::raw_bytes;

constexpr Command commands[]{
    // without a group
    {'!', 0,   {p},                   no_effect,            "Read and dropped"},
    {'&', 'E', {own_raw},             eeprom_command,       "EEPROM read, write, clear, restart"},
    {'+', 0,   {p},                   set_line_speed,       "Baud rate"},
    {'=', 0,   {},                    no_effect,            "No effect"},
    {'@', 0,   {},                    no_effect,            "No effect"},
    {'?', 0,   {},                    identify,             "Fixed identification answer"},
    {'X', 0,   {p},                   wait_command,         "Wait"},
    // group A, touch areas
    {'A', 'A', {p},                   enable_touch,         "Touch on or off"},
    {'A', 'B', {own},                 make_bar_touchable,   "Make a bar touchable"},
    {'A', 'D', {own},                 define_draw_area,     "New draw area"},
    {'A', 'E', {p},                   set_touch_border,     "Border of new keys"},
    {'A', 'F', {p},                   select_touch_font,    "Font of key labels"},
    {'A', 'G', {p},                   query_radio_group,    "Query radio group"},
    {'A', 'H', {own},                 define_report_area,   "New report area"},
    {'A', 'I', {p},                   set_touch_invert,     "Keys invert while held"},
    {'A', 'J', {own},                 define_picture_switch, "New switch with a picture"},
    {'A', 'K', {own},                 define_switch,        "New switch with a rectangle"},
    {'A', 'L', {p, p},                remove_by_code,       "Remove by code"},
    {'A', 'M', {own},                 define_touch_menu,    "Define a touch menu"},
    {'A', 'N', {p},                   invert_by_code,       "Invert by code"},
    {'A', 'P', {p, p},                set_switches,         "Set switch by code"},
    {'A', 'Q', {p},                   set_bar_report,       "Bar report mode"},
    {'A', 'R', {p},                   set_switch_group,     "Radio group of following switches"},
    {'A', 'S', {p},                   enable_touch_beep,    "Touch beep"},
    {'A', 'T', {own},                 define_key,           "New key with a rectangle"},
    {'A', 'U', {own},                 define_picture_key,   "New key with a picture"},
    {'A', 'V', {pt1, p},              remove_at_point,      "Remove at a point"},
    {'A', 'W', {p},                   set_label_rotation,   "Label rotation"},
    {'A', 'X', {p},                   query_switch,         "Query switch"},
    {'A', 'Y', {p},                   set_touch_gap,        "Label line gap"},
    {'A', 'Z', {zoom, zoom},          set_label_zoom,       "Label zoom"},
    // group B, bar graphs
    {'B', 'A', {bar, p},              set_bar_command,      "Set value"},
    {'B', 'D', {bar, p},              delete_bar_command,   "Delete, bit 0 of p also erases"},
    {'B', 'L', {bar, rect, p, p, p, p}, define_bar_left,    "Define, growing to the left"},
    {'B', 'O', {bar, rect, p, p, p, p}, define_bar_up,      "Define, growing upward"},
    {'B', 'R', {bar, rect, p, p, p, p}, define_bar_right,   "Define, growing to the right"},
    {'B', 'U', {bar, rect, p, p, p, p}, define_bar_down,    "Define, growing downward"},
    {'B', 'S', {bar},                 query_bar,            "Query value"},
    {'B', 'Z', {bar},                 redraw_bar_command,   "Redraw"},
    // group C, screen store
    {'C', 'B', {},                    store_display,        "Whole display to the clipboard slot"},
    {'C', 'S', {rect},                store_rectangle,      "Rectangle to the clipboard slot"},
    {'C', 'K', {pt1},                 paste_at_point,       "Paste at a point"},
    {'C', 'R', {},                    paste_in_place,       "Paste at the place it came from"},
    // group D, display
    {'D', 'A', {},                    display_off,          "Display off"},
    {'D', 'E', {},                    display_on,           "Display on"},
    {'D', 'C', {},                    show_clipboard,       "Show the clipboard slot"},
    {'D', 'N', {},                    show_planes,          "Show the planes"},
    {'D', 'I', {},                    invert_display,       "Invert all dots"},
    {'D', 'L', {},                    clear_display,        "Clear"},
    {'D', 'S', {},                    set_display,          "Set all dots"},
    // group G, lines and points
    {'G', 'D', {pt1, pt2},            line_command,         "Line"},
    {'G', 'P', {pt1},                 point_command,        "Point"},
    {'G', 'R', {rect},                rect_command,         "Rectangle"},
    {'G', 'V', {p},                   set_pen_link,         "Link mode"},
    {'G', 'W', {pt2},                 line_on_command,      "Line from the last end point"},
    {'G', 'Z', {p, p},                set_pen_size,         "Pen size"},
    // group K
    {'K', 'A', {p},                   set_address,          "Module address"},
    // group M, macros
    {'M', 'N', {p},                   run_normal_macro,     "Run normal macro"},
    {'M', 'T', {p},                   run_touch_macro,      "Run touch macro"},
    {'M', 'M', {p},                   run_menu_macro,       "Run menu macro"},
    {'M', 'A', {p, p, p},             auto_macro_cyclic,    "Automatic macro, cyclic"},
    {'M', 'J', {p, p, p},             auto_macro_to_and_fro, "Automatic macro, to and fro"},
    {'M', 'E', {p, p, p},             auto_macro_once,      "Automatic macro, once"},
    {'M', 'G', {p, p},                delayed_macro,        "One macro after a delay"},
    {'M', 'D', {p, p, p, p, p},       define_process_macro, "Define a process macro"},
    {'M', 'Z', {p, p},                set_process_period,   "Time of a process macro"},
    {'M', 'S', {p},                   enable_process_macros, "Process macros on or off"},
    // group N, menu boxes
    {'N', 'A', {},                    close_menu_command,   "Close the menu"},
    {'N', 'D', {pt1, p, raw_text},    open_menu_box,        "Open a menu box"},
    {'N', 'F', {p},                   select_menu_font,     "Menu font"},
    {'N', 'M', {p},                   start_menu_selection, "Close and start the macro of the selected row"},
    {'N', 'N', {},                    next_menu_row,        "Next row"},
    {'N', 'P', {},                    previous_menu_row,    "Previous row"},
    {'N', 'S', {},                    send_menu_selection,  "Close and report the selection"},
    {'N', 'T', {p},                   set_menu_opening,     "Menu opening mode"},
    {'N', 'W', {p},                   set_menu_rotation,    "Menu rotation"},
    {'N', 'Y', {p},                   set_menu_gap,         "Menu line gap"},
    {'N', 'Z', {zoom, zoom},          set_menu_zoom,        "Menu zoom"},
    // group Q, flash plane
    {'Q', 'I', {rect},                flash_inverted,       "Flash plane from the main plane, inverted"},
    {'Q', 'L', {rect},                flash_same,           "Flash plane from the main plane"},
    {'Q', 'M', {rect, p},             flash_pattern,        "Pattern into the flash plane"},
    {'Q', 'Z', {p},                   set_flash_period,     "Flash period"},
    // group R, rectangle fills
    {'R', 'L', {rect},                clear_area_command,   "Clear"},
    {'R', 'S', {rect},                set_area_command,     "Set"},
    {'R', 'I', {rect},                invert_area_command,  "Invert"},
    {'R', 'M', {rect, p},             pattern_area_command, "Fill with a pattern"},
    {'R', 'O', {rect, p},             box_command,          "Filled box with a frame"},
    {'R', 'R', {rect, p},             border_set_command,   "Border frame, link mode 1"},
    {'R', 'T', {rect, p},             border_replace_command, "Border frame, link mode 4"},
    // group S, status
    {'S', 'B', {p, raw_bytes},        send_bytes,           "Send bytes"},
    {'S', 'I', {},                    send_information,     "Query module information"},
    {'S', 'V', {},                    send_version,         "Query version"},
    // group T, terminal
    {'T', 'A', {},                    terminal_off,         "Terminal off"},
    {'T', 'E', {},                    terminal_show,        "Terminal on"},
    {'T', 'C', {p},                   set_cursor,           "Cursor on or off"},
    {'T', 'P', {p, p},                set_position,         "Cursor position"},
    {'T', 'Q', {},                    print_interface,      "Print the interface line"},
    {'T', 'R', {},                    restore_position,     "Restore the cursor position"},
    {'T', 'S', {},                    save_position,        "Save the cursor position"},
    {'T', 'V', {},                    print_version,        "Print the version line"},
    // group U, pictures
    {'U', 'B', {p},                   set_picture_flash,    "Flash attribute of pictures"},
    {'U', 'C', {pt1},                 picture_from_clipboard, "Draw the clipboard slot"},
    {'U', 'H', {rect},                hardcopy,             "Hardcopy of the area to the line"},
    {'U', 'I', {pt1, p},              picture_from_eeprom,  "Draw an EEPROM picture"},
    {'U', 'L', {pt1, raw_picture},    picture_from_stream,  "Draw a picture from the stream"},
    {'U', 'V', {p},                   set_picture_link,     "Link mode"},
    {'U', 'W', {p},                   set_picture_rotation, "Rotation"},
    {'U', 'Z', {zoom, zoom},          set_picture_zoom,     "Zoom"},
    // group Y, ports and backlight
    {'Y', 'H', {p},                   set_brightness,       "Backlight brightness"},
    {'Y', 'L', {raw_byte},            switch_backlight,     "Backlight on, off or timed"},
    {'Y', 'S', {p},                   beep_command,         "Beep"},
    {'Y', 'W', {p, p},                output_port_command,  "Output port"},
    // group Z, strings
    {'Z', 'L', {pt1, raw_string},     string_left,          "Draw a string, left aligned"},
    {'Z', 'C', {pt1, raw_string},     string_centre,        "Draw a string, centred"},
    {'Z', 'R', {pt1, raw_string},     string_right,         "Draw a string, right aligned"},
    {'Z', 'B', {p},                   set_string_flash,     "Flash attribute of strings"},
    {'Z', 'F', {p},                   select_string_font,   "String font"},
    {'Z', 'V', {p},                   set_string_link,      "Link mode"},
    {'Z', 'W', {p},                   set_string_rotation,  "Rotation"},
    {'Z', 'Y', {p},                   set_string_gap,       "Line gap"},
    {'Z', 'Z', {zoom, zoom},          set_string_zoom,      "Zoom"},
};
// clang-format on

constexpr int command_count = std::size(commands);
constexpr int group_count = 128;
constexpr int op_count = 27;  // none, and A to Z

/// Where a row is filed under its op: 0 for none, 1..26 for A to Z, -1 for any other byte.
constexpr int op_index(int op) {
    if (op == 0) return 0;
    return op >= 'A' && op <= 'Z' ? op - 'A' + 1 : -1;
}

/// Row number + 1 of each group and op, 0 for undefined ones.
struct CommandIndex {
    std::array<std::array<std::uint8_t, op_count>, group_count> rows;
    std::array<bool, group_count> known;  // groups that have a row
};

constexpr CommandIndex index_of(std::span<const Command> table) {
    CommandIndex index{};
    for (std::size_t i = 0; i < table.size(); ++i) {
        const auto group = static_cast<unsigned char>(table[i].group);
        index.rows[group][static_cast<std::size_t>(op_index(table[i].op))] =
            static_cast<std::uint8_t>(i + 1);
        index.known[group] = true;
    }
    return index;
}

constexpr CommandIndex command_index = index_of(commands);

constexpr bool all_differ(std::span<const Command> table) {
    const CommandIndex index = index_of(table);
    int filed = 0;
    for (const auto& group : index.rows)
        filed += static_cast<int>(std::ranges::count_if(group, [](int row) { return row != 0; }));
    return filed == static_cast<int>(table.size());
}
static_assert(all_differ(commands) && command_count < 255);

const Command* find_command(std::uint8_t group, int op) {
    if (op_index(op) < 0) return nullptr;
    const int row = command_index.rows[group][static_cast<std::size_t>(op_index(op))];
    return row == 0 ? nullptr : &commands[row - 1];
}

void run_row(const Command& command) {
    trace(TraceKind::letters, command.group, command.op, command.role);
    read_params(command.reads);
    command.run();
}

/// Reads the op letter and runs the command. False if it is none.
bool run_op(std::uint8_t group) {
    const std::uint8_t op = read_letter();
    const Command* command = find_command(group, op);
    if (command == nullptr) {
        trace(TraceKind::letters, group, op);
        remark(Remark::undefined_op);
        return false;
    }
    run_row(*command);
    return true;
}

/// Group T: the cursor goes before the op letter is read and comes back behind every op, defined
/// or not.
void run_terminal_command() {
    cursor_hide();
    run_op('T');
    cursor_show();
}

/// Group R: an op letter that is no command reads a rectangle all the same.
void run_rectangle_command() {
    if (!run_op('R')) read_rect();
}

/// A read in the words of the reference.
std::string_view words_of(Read read) {
    switch (read) {
    case Read::none:
        return "";
    case Read::p:
        return "p";
    case Read::pt1:
        return "pt1";
    case Read::pt2:
        return "pt2";
    case Read::rect:
        return "rect";
    case Read::zoom:
        return "zoom";
    case Read::bar:
        return "bar";
    case Read::raw_string:
        return "raw string";
    case Read::raw_text:
        return "raw text";
    case Read::raw_picture:
        return "raw picture";
    case Read::raw_byte:
        return "one raw byte";
    case Read::raw_bytes:
        return "p raw bytes";
    case Read::own:
        return "own";
    case Read::own_raw:
        return "own, raw";
    }
    return "";
}

std::string parameters_of(const Command& command) {
    std::string words;
    for (const Read read : command.reads) {
        if (read == none) break;
        if (!words.empty()) words += ", ";
        words += words_of(read);
    }
    return words.empty() ? "none" : words;
}

}  // namespace

void run_command() {
    const std::uint8_t group = read_letter();
    if (group >= group_count || !command_index.known[group]) {
        trace(TraceKind::letters, group);
        remark(Remark::undefined_group);
        terminal_put(group);
        return;
    }
    if (const Command* command = find_command(group, 0)) return run_row(*command);
    if (group == 'T') return run_terminal_command();
    if (group == 'R') return run_rectangle_command();
    run_op(group);
}

std::string command_reference() {
    std::string page =
        "# Commands\n\n"
        "Each command begins with a lead-in, ESC (0x1B) or `#`, and its one or two letters, in "
        "either "
        "case.\nBehind ESC a parameter is one byte; behind `#` it is an ASCII number, decimal or, "
        "behind `$`, hexadecimal,\nended by one byte of any kind. Raw parameters are bytes under "
        "both "
        "lead-ins.\n\n"
        "`p` is one byte, `pt1` and `pt2` are points x, y, `rect` is x1, y1, x2, y2 in any order, "
        "`zoom` is 1 to 4,\n`bar` is a bar number 1 to 32, `own` is read by the command itself. x "
        "is "
        "cut to 239, y to 127.\n\n"
        "| Command | Parameters | Role |\n|---|---|---|\n";
    for (const Command& command : commands) {
        page += "| `ESC ";
        page += command.group;
        if (command.op != 0) {
            page += ' ';
            page += command.op;
        }
        page += "` | " + parameters_of(command) + " | " + command.role + " |\n";
    }
    return page;
}

}  // namespace orvanel
