#include "firmware/core/roof/commands.h"

#include "firmware/core/ground/backlight.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/language/commands.h"
#include "firmware/core/read/read.h"
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
#include <array>
#include <cstddef>
#include <cstdint>

namespace orvanel {

namespace {

void no_effect() {}

enum class Reading : bool { dispatch, handler };
constexpr Reading reads_itself = Reading::handler;

/// What a command of the table does. A handler that reads itself does something in front of its
/// parameters or between them.
struct Handler {
    char group, op;
    void (*run)();
    Reading reading = Reading::dispatch;
};

// clang-format off
constexpr Handler handlers[]{
    // without a group
    {'!', 0,   no_effect},
    {'&', 'E', eeprom_command},
    {'+', 0,   set_line_speed},
    {'=', 0,   no_effect},
    {'@', 0,   no_effect},
    {'?', 0,   identify},
    {'X', 0,   wait_command},
    // group A, touch areas
    {'A', 'A', enable_touch},
    {'A', 'B', make_bar_touchable},
    {'A', 'D', define_draw_area, reads_itself},
    {'A', 'E', set_touch_border},
    {'A', 'F', select_touch_font},
    {'A', 'G', query_radio_group},
    {'A', 'H', define_report_area, reads_itself},
    {'A', 'I', set_touch_invert},
    {'A', 'J', define_picture_switch, reads_itself},
    {'A', 'K', define_switch, reads_itself},
    {'A', 'L', remove_by_code},
    {'A', 'M', define_touch_menu},
    {'A', 'N', invert_by_code},
    {'A', 'P', set_switches},
    {'A', 'Q', set_bar_report},
    {'A', 'R', set_switch_group},
    {'A', 'S', enable_touch_beep},
    {'A', 'T', define_key, reads_itself},
    {'A', 'U', define_picture_key, reads_itself},
    {'A', 'V', remove_at_point},
    {'A', 'W', set_label_rotation},
    {'A', 'X', query_switch},
    {'A', 'Y', set_touch_gap},
    {'A', 'Z', set_label_zoom},
    // group B, bar graphs
    {'B', 'A', set_bar_command},
    {'B', 'D', delete_bar_command},
    {'B', 'L', define_bar_left},
    {'B', 'O', define_bar_up},
    {'B', 'R', define_bar_right},
    {'B', 'U', define_bar_down},
    {'B', 'S', query_bar},
    {'B', 'Z', redraw_bar_command},
    // group C, screen store
    {'C', 'B', store_display},
    {'C', 'S', store_rectangle},
    {'C', 'K', paste_at_point},
    {'C', 'R', paste_in_place},
    // group D, display
    {'D', 'A', display_off},
    {'D', 'E', display_on},
    {'D', 'C', show_clipboard},
    {'D', 'N', show_planes},
    {'D', 'I', invert_display},
    {'D', 'L', clear_display},
    {'D', 'S', set_display},
    // group G, lines and points
    {'G', 'D', line_command},
    {'G', 'P', point_command},
    {'G', 'R', rect_command},
    {'G', 'V', set_pen_link},
    {'G', 'W', line_on_command},
    {'G', 'Z', set_pen_size},
    // group K
    {'K', 'A', set_address},
    // group M, macros
    {'M', 'N', run_normal_macro},
    {'M', 'T', run_touch_macro},
    {'M', 'M', run_menu_macro},
    {'M', 'A', auto_macro_cyclic},
    {'M', 'J', auto_macro_to_and_fro},
    {'M', 'E', auto_macro_once},
    {'M', 'G', delayed_macro},
    {'M', 'D', define_process_macro},
    {'M', 'Z', set_process_period},
    {'M', 'S', enable_process_macros},
    // group N, menu boxes
    {'N', 'A', close_menu_command},
    {'N', 'D', open_menu_box},
    {'N', 'F', select_menu_font},
    {'N', 'M', start_menu_selection},
    {'N', 'N', next_menu_row},
    {'N', 'P', previous_menu_row},
    {'N', 'S', send_menu_selection},
    {'N', 'T', set_menu_opening},
    {'N', 'W', set_menu_rotation},
    {'N', 'Y', set_menu_gap},
    {'N', 'Z', set_menu_zoom},
    // group Q, flash plane
    {'Q', 'I', flash_inverted},
    {'Q', 'L', flash_same},
    {'Q', 'M', flash_pattern},
    {'Q', 'Z', set_flash_period},
    // group R, rectangle fills
    {'R', 'L', clear_area_command},
    {'R', 'S', set_area_command},
    {'R', 'I', invert_area_command},
    {'R', 'M', pattern_area_command},
    {'R', 'O', box_command},
    {'R', 'R', border_set_command},
    {'R', 'T', border_replace_command},
    // group S, status
    {'S', 'B', send_bytes},
    {'S', 'I', send_information},
    {'S', 'V', send_version},
    // group T, terminal
    {'T', 'A', terminal_off},
    {'T', 'E', terminal_show},
    {'T', 'C', set_cursor},
    {'T', 'P', set_position},
    {'T', 'Q', print_interface},
    {'T', 'R', restore_position},
    {'T', 'S', save_position},
    {'T', 'V', print_version},
    // group U, pictures
    {'U', 'B', set_picture_flash},
    {'U', 'C', picture_from_clipboard},
    {'U', 'H', hardcopy},
    {'U', 'I', picture_from_eeprom},
    {'U', 'L', picture_from_stream},
    {'U', 'V', set_picture_link},
    {'U', 'W', set_picture_rotation},
    {'U', 'Z', set_picture_zoom},
    // group Y, ports and backlight
    {'Y', 'H', set_brightness},
    {'Y', 'L', switch_backlight},
    {'Y', 'S', beep_command},
    {'Y', 'W', output_port_command},
    // group Z, strings
    {'Z', 'L', string_left},
    {'Z', 'C', string_centre},
    {'Z', 'R', string_right},
    {'Z', 'B', set_string_flash},
    {'Z', 'F', select_string_font},
    {'Z', 'V', set_string_link},
    {'Z', 'W', set_string_rotation},
    {'Z', 'Y', set_string_gap},
    {'Z', 'Z', set_string_zoom},
};
// clang-format on

/// A row of the language's table with its handler.
struct Command {
    char group;
    char op;
    std::array<Read, max_reads> reads;  // what the dispatch reads before the handler runs
    void (*run)();
    const char* role;
};

constexpr Command command_of(const CommandRow& row, const Handler& handler) {
    Command command{row.group, row.op, {}, handler.run, row.role};
    if (handler.reading == Reading::dispatch)
        for (std::size_t i = 0; i < max_reads && !is_raw(row.parameters[i].read); ++i)
            command.reads[i] = row.parameters[i].read;
    return command;
}

constexpr bool handlers_match() {
    return std::ranges::equal(handlers, command_rows, [](const Handler& handler, const auto& row) {
        return handler.group == row.group && handler.op == row.op;
    });
}
static_assert(handlers_match(), "a handler for each row of the language's table, in its order");

constexpr auto all_commands() {
    std::array<Command, command_count> made{};
    std::ranges::transform(command_rows, handlers, made.begin(), command_of);
    return made;
}

constexpr std::array<Command, command_count> commands = all_commands();

const Command* find_command(std::uint8_t group, int op) {
    const int row = command_number(group, op);
    return row < 0 ? nullptr : &commands[static_cast<std::size_t>(row)];
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

/// Group T: the cursor goes before the op letter is read and comes back after every op, defined
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

}  // namespace

void run_command() {
    const std::uint8_t group = read_letter();
    if (!is_command_group(group)) {
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

}  // namespace orvanel
