// commands.h: the module's command language as one table: the letters of each command, all that it
// reads, in its order and by name, and what it does. The dispatch, the printed reference and the
// forms of kits are made of it. docs/reference/commands.md is the table as a page.

#pragma once

#include "firmware/core/language/eeprom_layout.h"
#include "firmware/core/language/reads.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace orvanel {

/// A parameter; `names` holds one for each number that it takes, or one for raw bytes, and null
/// after that. `kind` says what a number counts.
struct Parameter {
    Read read;
    Kind kind;
    std::array<const char*, 4> names;
};

constexpr int max_parameters = 6;

/// One command. `op` is 0 for a command without an op letter; after the last parameter stand such
/// as read nothing.
struct CommandRow {
    char group;
    char op;
    std::array<Parameter, max_parameters> parameters;
    const char* role;
};

// clang-format off
inline constexpr auto command_rows = [] {
    const auto taken = [](Read read, const char* name) { return Parameter{read, Kind::number, {name}}; };
    const auto number = [](const char* name) { return Parameter{Read::p, Kind::number, {name}}; };
    const auto word = [](const char* name) { return Parameter{Read::raw_word, Kind::number, {name}}; };
    const auto store = [](Kind kind, const char* name) { return Parameter{Read::p, kind, {name}}; };
    constexpr Parameter
        point{Read::pt1, Kind::number, {"x", "y"}}, end_point{Read::pt2, Kind::number, {"x", "y"}},
        from{Read::pt1, Kind::number, {"x1", "y1"}}, to{Read::pt2, Kind::number, {"x2", "y2"}},
        rect{Read::rect, Kind::number, {"x1", "y1", "x2", "y2"}};
    constexpr Parameter
        n = number("n"), time = number("time"), erase = number("erase"), group = number("group"),
        least = number("least"), most = number("most"), kind = number("kind"), row = number("row"),
        pattern = number("pattern"), process = number("process"), count = number("count"),
        zoom_x = taken(Read::zoom, "zoom x"), zoom_y = taken(Read::zoom, "zoom y"),
        bar = taken(Read::bar, "bar");
    constexpr Parameter
        font = store(Kind::font, "font"), picture = store(Kind::picture, "picture"),
        normal = store(Kind::normal, "macro"), touch = store(Kind::touch, "macro"),
        menu = store(Kind::menu, "macro"), first = store(Kind::normal, "first macro"),
        last = store(Kind::normal, "last macro"), code = store(Kind::touch, "code"),
        down = store(Kind::touch, "down code"), up = store(Kind::touch, "up code"),
        list = store(Kind::menu, "list code");
    constexpr Parameter
        string = taken(Read::raw_string, "text"), rows = taken(Read::raw_text, "text"),
        streamed = taken(Read::raw_picture, "picture"), byte = taken(Read::raw_byte, "byte"),
        letter = taken(Read::raw_byte, "letter"), bytes = taken(Read::raw_bytes, "bytes"),
        data = taken(Read::raw_data, "data");
    return std::to_array<CommandRow>({
        // without a group
        {'!', 0,   {n},                                       "Read and dropped"},
        {'&', 'E', {word("address"), word("length"), letter, data}, "EEPROM read, write, clear, restart"},
        {'+', 0,   {n},                                       "Baud rate"},
        {'=', 0,   {},                                        "No effect"},
        {'@', 0,   {},                                        "No effect"},
        {'?', 0,   {},                                        "Fixed identification answer"},
        {'X', 0,   {time},                                    "Wait"},
        // group A, touch areas
        {'A', 'A', {n},                                       "Touch on or off"},
        {'A', 'B', {bar},                                     "Make a bar touchable"},
        {'A', 'D', {rect, number("pen")},                     "New draw area"},
        {'A', 'E', {number("border")},                        "Border of new keys"},
        {'A', 'F', {font},                                    "Font of key labels"},
        {'A', 'G', {group},                                   "Query radio group"},
        {'A', 'H', {rect},                                    "New report area"},
        {'A', 'I', {n},                                       "Keys invert while held"},
        {'A', 'J', {point, picture, down, up, string},        "New switch with a picture"},
        {'A', 'K', {rect, down, up, string},                  "New switch with a rectangle"},
        {'A', 'L', {code, erase},                             "Remove by code"},
        {'A', 'M', {rect, down, up, list, rows},              "Define a touch menu"},
        {'A', 'N', {code},                                    "Invert by code"},
        {'A', 'P', {code, n},                                 "Set switch by code"},
        {'A', 'Q', {n},                                       "Bar report mode"},
        {'A', 'R', {group},                                   "Radio group of following switches"},
        {'A', 'S', {n},                                       "Touch beep"},
        {'A', 'T', {rect, down, up, string},                  "New key with a rectangle"},
        {'A', 'U', {point, picture, down, up, string},        "New key with a picture"},
        {'A', 'V', {point, erase},                            "Remove at a point"},
        {'A', 'W', {n},                                       "Label rotation"},
        {'A', 'X', {code},                                    "Query switch"},
        {'A', 'Y', {n},                                       "Label line gap"},
        {'A', 'Z', {zoom_x, zoom_y},                          "Label zoom"},
        // group B, bar graphs
        {'B', 'A', {bar, number("value")},                    "Set value"},
        {'B', 'D', {bar, erase},                              "Delete, bit 0 of p also erases"},
        {'B', 'L', {bar, rect, least, most, kind, pattern},   "Define, growing to the left"},
        {'B', 'O', {bar, rect, least, most, kind, pattern},   "Define, growing upward"},
        {'B', 'R', {bar, rect, least, most, kind, pattern},   "Define, growing to the right"},
        {'B', 'U', {bar, rect, least, most, kind, pattern},   "Define, growing downward"},
        {'B', 'S', {bar},                                     "Query value"},
        {'B', 'Z', {bar},                                     "Redraw"},
        // group C, screen store
        {'C', 'B', {},                                        "Whole display to the clipboard slot"},
        {'C', 'S', {rect},                                    "Rectangle to the clipboard slot"},
        {'C', 'K', {point},                                   "Paste at a point"},
        {'C', 'R', {},                                        "Paste at the place it came from"},
        // group D, display
        {'D', 'A', {},                                        "Display off"},
        {'D', 'E', {},                                        "Display on"},
        {'D', 'C', {},                                        "Show the clipboard slot"},
        {'D', 'N', {},                                        "Show the planes"},
        {'D', 'I', {},                                        "Invert all dots"},
        {'D', 'L', {},                                        "Clear"},
        {'D', 'S', {},                                        "Set all dots"},
        // group G, lines and points
        {'G', 'D', {from, to},                                "Line"},
        {'G', 'P', {point},                                   "Point"},
        {'G', 'R', {rect},                                    "Rectangle"},
        {'G', 'V', {number("link mode")},                     "Link mode"},
        {'G', 'W', {end_point},                               "Line from the last end point"},
        {'G', 'Z', {number("width"), number("height")},       "Pen size"},
        // group K
        {'K', 'A', {number("address")},                       "Module address"},
        // group M, macros
        {'M', 'N', {normal},                                  "Run normal macro"},
        {'M', 'T', {touch},                                   "Run touch macro"},
        {'M', 'M', {menu},                                    "Run menu macro"},
        {'M', 'A', {first, last, time},                       "Automatic macro, cyclic"},
        {'M', 'J', {first, last, time},                       "Automatic macro, to and fro"},
        {'M', 'E', {first, last, time},                       "Automatic macro, once"},
        {'M', 'G', {normal, time},                            "One macro after a delay"},
        {'M', 'D', {process, kind, first, last, time},        "Define a process macro"},
        {'M', 'Z', {process, time},                           "Time of a process macro"},
        {'M', 'S', {n},                                       "Process macros on or off"},
        // group N, menu boxes
        {'N', 'A', {},                                        "Close the menu"},
        {'N', 'D', {point, row, rows},                        "Open a menu box"},
        {'N', 'F', {font},                                    "Menu font"},
        {'N', 'M', {menu},                                    "Close and start the macro of the selected row"},
        {'N', 'N', {},                                        "Next row"},
        {'N', 'P', {},                                        "Previous row"},
        {'N', 'S', {},                                        "Close and report the selection"},
        {'N', 'T', {n},                                       "Menu opening mode"},
        {'N', 'W', {n},                                       "Menu rotation"},
        {'N', 'Y', {n},                                       "Menu line gap"},
        {'N', 'Z', {zoom_x, zoom_y},                          "Menu zoom"},
        // group Q, flash plane
        {'Q', 'I', {rect},                                    "Flash plane from the main plane, inverted"},
        {'Q', 'L', {rect},                                    "Flash plane from the main plane"},
        {'Q', 'M', {rect, pattern},                           "Pattern into the flash plane"},
        {'Q', 'Z', {time},                                    "Flash period"},
        // group R, rectangle fills
        {'R', 'L', {rect},                                    "Clear"},
        {'R', 'S', {rect},                                    "Set"},
        {'R', 'I', {rect},                                    "Invert"},
        {'R', 'M', {rect, pattern},                           "Fill with a pattern"},
        {'R', 'O', {rect, pattern},                           "Filled box with a frame"},
        {'R', 'R', {rect, number("border")},                  "Border frame, link mode 1"},
        {'R', 'T', {rect, number("border")},                  "Border frame, link mode 4"},
        // group S, status
        {'S', 'B', {count, bytes},                            "Send bytes"},
        {'S', 'I', {},                                        "Query module information"},
        {'S', 'V', {},                                        "Query version"},
        // group T, terminal
        {'T', 'A', {},                                        "Terminal off"},
        {'T', 'E', {},                                        "Terminal on"},
        {'T', 'C', {n},                                       "Cursor on or off"},
        {'T', 'P', {number("column"), row},                   "Cursor position"},
        {'T', 'Q', {},                                        "Print the interface line"},
        {'T', 'R', {},                                        "Restore the cursor position"},
        {'T', 'S', {},                                        "Save the cursor position"},
        {'T', 'V', {},                                        "Print the version line"},
        // group U, pictures
        {'U', 'B', {n},                                       "Flash attribute of pictures"},
        {'U', 'C', {point},                                   "Draw the clipboard slot"},
        {'U', 'H', {rect},                                    "Hardcopy of the area to the line"},
        {'U', 'I', {point, picture},                          "Draw an EEPROM picture"},
        {'U', 'L', {point, streamed},                         "Draw a picture from the stream"},
        {'U', 'V', {number("link mode")},                     "Link mode"},
        {'U', 'W', {n},                                       "Rotation"},
        {'U', 'Z', {zoom_x, zoom_y},                          "Zoom"},
        // group Y, ports and backlight
        {'Y', 'H', {number("brightness")},                    "Backlight brightness"},
        {'Y', 'L', {byte},                                    "Backlight on, off or timed"},
        {'Y', 'S', {time},                                    "Beep"},
        {'Y', 'W', {number("line"), n},                       "Output port"},
        // group Z, strings
        {'Z', 'L', {point, string},                           "Draw a string, left aligned"},
        {'Z', 'C', {point, string},                           "Draw a string, centred"},
        {'Z', 'R', {point, string},                           "Draw a string, right aligned"},
        {'Z', 'B', {n},                                       "Flash attribute of strings"},
        {'Z', 'F', {font},                                    "String font"},
        {'Z', 'V', {number("link mode")},                     "Link mode"},
        {'Z', 'W', {n},                                       "Rotation"},
        {'Z', 'Y', {n},                                       "Line gap"},
        {'Z', 'Z', {zoom_x, zoom_y},                          "Zoom"},
    });
}();
// clang-format on

constexpr int command_count = std::size(command_rows);

constexpr int parameter_count(const CommandRow& row) {
    return static_cast<int>(std::ranges::count_if(
        row.parameters, [](const Parameter& p) { return p.read != Read::none; }));
}

// Where a command stands in the table.

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
    bool all_differ;
};

inline constexpr CommandIndex command_index = [] {
    CommandIndex index{{}, {}, true};
    for (int i = 0; i < command_count; ++i) {
        const CommandRow& row = command_rows[static_cast<std::size_t>(i)];
        const auto group = static_cast<unsigned char>(row.group);
        auto& filed = index.rows[group][static_cast<std::size_t>(op_index(row.op))];
        if (filed != 0) index.all_differ = false;
        filed = static_cast<std::uint8_t>(i + 1);
        index.known[group] = true;
    }
    return index;
}();
static_assert(command_index.all_differ && command_count < 255);

constexpr bool is_command_group(std::uint8_t letter) {
    return letter < group_count && command_index.known[letter];
}

/// The row of the command, -1 if the letters are none's. `group` is_command_group; `op` is 0 for a
/// command without an op letter. Letters are upper-case.
constexpr int command_number(std::uint8_t group, int op) {
    if (op_index(op) < 0) return -1;
    return command_index.rows[group][static_cast<std::size_t>(op_index(op))] - 1;
}
static_assert(command_number('X', 0) >= 0 && command_number('X', 'A') < 0);

}  // namespace orvanel
