#include "host/trace/command_reference.h"

#include "firmware/core/language/commands.h"

#include <string_view>

namespace orvanel {

namespace {

constexpr std::string_view head =
    R"(# Commands

Each command begins with a lead-in, ESC (0x1B) or `#`, and its one or two letters, in either case.
Behind ESC a parameter is one byte; behind `#` it is an ASCII number, decimal or, behind `$`, hexadecimal,
ended by one byte of any kind. Raw parameters are bytes under both lead-ins.

`p` is one byte, `pt1` and `pt2` are points x, y, `rect` is x1, y1, x2, y2 in any order, `zoom` is 1 to 4,
`bar` is a bar number 1 to 32. x is cut to 239, y to 127. A `raw string` and a `raw text` end at the first
0, line feed or return; a `raw word` is two bytes, low byte first. The third column names the parameters in
their order.

| Command | Parameters | Names | Role |
|---|---|---|---|
)";

/// A read in the words of the page.
std::string_view words_of(Read read) {
    switch (read) {
    case Read::none:
        return "none";
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
    case Read::raw_word:
        return "raw word";
    case Read::raw_data:
        return "after W: length raw bytes";
    }
    return "";
}

void append(std::string& list, std::string_view word) {
    if (!list.empty()) list += ", ";
    list += word;
}

std::string line_of(const CommandRow& row) {
    std::string reads, names;
    for (int i = 0; i < parameter_count(row); ++i) {
        const Parameter& parameter = row.parameters[static_cast<std::size_t>(i)];
        append(reads, words_of(parameter.read));
        for (const char* name : parameter.names)
            if (name != nullptr) append(names, name);
    }
    if (reads.empty()) reads = words_of(Read::none);
    std::string line = "| `ESC ";
    line += row.group;
    if (row.op != 0) (line += ' ') += row.op;
    line += "` | " + reads + " | " + names + (names.empty() ? "| " : " | ") + row.role + " |\n";
    return line;
}

}  // namespace

std::string command_reference() {
    std::string page(head);
    for (const CommandRow& row : command_rows)
        page += line_of(row);
    return page;
}

}  // namespace orvanel
