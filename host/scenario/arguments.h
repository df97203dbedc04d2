// arguments.h: the arguments of scenario commands: the kinds that there are, and reading them.

#pragma once

#include "firmware/core/ground/draw_area.h"
#include "host/bridge/bridge.h"
#include "host/scenario/expectations.h"
#include "host/scenario/picture.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

/// What one argument of a command is.
enum class Take : std::uint8_t {
    none,
    bytes,    // HEX and TEXT pieces
    path,     // from the folder of the scenario
    picture,  // a path that ends in .png or .pbm
    file,     // a path that has the `ending`
    shown,    // `main`, `flash` or nothing
    number,   // least..most; `otherwise` if it is left out, where that isn't below 0
    dot,      // X and Y of a dot on the glass
    place,    // X and Y as bytes, or nothing for 0, 0
    word,     // a name without blanks
    pixel,    // PX and PY in the window, or beside it
    key,      // a text in quotes, or the rest of the line
    control,  // a control's number, and perhaps a value, or `close`
    message,  // NUMBER FIRST SECOND in hexadecimal
    within,   // `within MS` or nothing, then `otherwise`
    target,   // "LABEL", a number or X Y
    lasting,  // `for MS` or nothing, then `otherwise`
    text,     // "TEXT" as codes of the module, into `bytes`; may be empty if `least` is 0
    where,    // `in X1 Y1 X2 Y2`, `near "TEXT"`, `whole`, `in any phase`: any of these
    part,     // `in X1 Y1 X2 Y2` and any number of `except X1 Y1 X2 Y2`
    goal,     // `to VALUE`, `to PERCENT %`, or `to X Y` from a dot
};

/// How a line names what it means.
enum class By : std::uint8_t {
    label,   // what it says, as codes of the module
    number,  // a code of an area, a bar's number or a row's
    dot,     // a dot of the glass
};
struct Target {
    By by;
    std::vector<std::uint8_t> label;
    int number;
    int x, y;
};

struct Argument {
    Take take;
    std::int64_t least, most;
    std::int64_t otherwise;
    std::string_view ending{};
};

/// Arguments::number of `dialog close`.
constexpr std::int64_t dialog_close = -1;

/// Where on the glass a text is looked for, and as what.
struct TextWhere {
    std::optional<DrawArea> inside;
    std::vector<std::uint8_t> near;  // next to this text; empty: anywhere
    bool whole;                      // not as a part of a longer text
    bool any_phase;                  // of the flash, not the present one alone
};

/// The arguments of the running command.
struct Arguments {
    std::vector<std::uint8_t> bytes;
    std::string path;  // resolved against the folder of the scenario
    Shown shown;
    std::int64_t number;
    std::int64_t x, y;
    std::string word;
    bool quoted;         // `word` stood in quotes
    std::int64_t value;  // of a control, 1 if none was given; of a bar, or percent of its scale
    bool percent;
    Target target;
    TextWhere where;
    ScreenPart part;
    std::int64_t within_ms;
    BridgeMessage message;
};

/// Takes an argument of this kind from the front of the rest of a line. Empty, or what is wrong
/// with it.
std::string take_argument(std::string_view& rest, const Argument& a, Arguments& into);

}  // namespace orvanel
