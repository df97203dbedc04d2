// write_header.cpp: the header for the firmware of a device, out of the table of commands.
//
//     write_header TEMPLATE VERSION OUT.h    the template, with a function for each command
//     write_header --calls OUT.inc            for the tests: each function called once, and the
//     same
//                                            command as a line of a kit
//
// Leaves with 0, or with 1 after one message on stderr.

#include "firmware/core/language/commands.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvanel {
namespace {

/// A function of the header. `tail` is how the parameter after the numbers is read.
struct Function {
    std::string name;     // in C
    std::string letters;  // in the stream
    std::string note;     // a comment
    std::vector<std::string> numbers;
    Read tail;
    std::string tail_name;
};

/// The name of a command whose letter can't stand in a name.
std::string name_of_sign(char sign) {
    switch (sign) {
    case '!':
        return "dropped";
    case '+':
        return "baud_rate";
    case '=':
        return "no_effect";
    case '@':
        return "no_effect_at";
    case '?':
        return "identify";
    default:
        return {};
    }
}

std::string identifier_of(std::string name) {
    std::ranges::replace(name, ' ', '_');
    return name;
}

Function function_of(const CommandRow& row) {
    Function function{{}, {row.group}, row.role, {}, Read::none, {}};
    if (row.op != 0) function.letters += row.op;
    const std::string sign = name_of_sign(row.group);
    function.name = sign.empty() ? function.letters : sign;
    for (const Parameter& parameter : row.parameters) {
        if (is_raw(parameter.read)) {
            function.tail = parameter.read;
            function.tail_name = identifier_of(parameter.names[0]);
        }
        for (int i = 0; i < numbers_of(parameter.read); ++i)
            function.numbers.push_back(identifier_of(parameter.names[static_cast<std::size_t>(i)]));
    }
    if (function.tail == Read::raw_byte) {
        function.numbers.push_back(function.tail_name);
        function.tail = Read::none;
    }
    // Bytes count themselves.
    if (function.tail == Read::raw_bytes) function.numbers.pop_back();
    return function;
}

bool is_eeprom(const CommandRow& row) { return row.parameters[0].read == Read::raw_word; }

/// Lines of at most 100 columns, broken after commas and set under the bracket.
std::string wrapped(const std::string& line) {
    constexpr std::size_t max_columns = 100;
    if (line.size() <= max_columns) return line;
    const std::size_t cut = line.rfind(", ", max_columns - 1) + 1;
    const std::string indent(line.find('(') + 1, ' ');
    return line.substr(0, cut) + "\n" + indent + line.substr(cut + 1);
}

std::string tail_parameters(const Function& function) {
    switch (function.tail) {
    case Read::none:
        return {};
    case Read::raw_picture:
        return ", const uint8_t *" + function.tail_name + ", size_t size";
    case Read::raw_bytes:
    case Read::raw_data:
        return ", const void *" + function.tail_name + ", size_t size";
    default:
        return ", const char *" + function.tail_name;
    }
}

std::string body_of(const Function& function) {
    std::string numbers = "NULL, 0";
    std::string body;
    std::string list;
    for (const std::string& number : function.numbers)
        list += (list.empty() ? "" : ", ") + number;
    std::size_t count = function.numbers.size();
    if (function.tail == Read::raw_bytes) {
        list += "size > 255 ? -1 : (int)size";
        ++count;
    }
    if (count > 0) {
        body += "    const int numbers[] = {" + list + "};\n";
        numbers = "numbers, " + std::to_string(count);
    }
    std::string call = "orvanel_command";
    std::string tail = "NULL, 0";
    if (function.tail == Read::raw_string || function.tail == Read::raw_text) {
        call += "_with_text";
        tail = function.tail_name;
    } else if (function.tail != Read::none) {
        if (function.tail == Read::raw_picture) call += "_with_picture";
        tail = function.tail_name + ", size";
    }
    return body + "    return " + call + "(out, \"" + function.letters + "\", " + numbers + ", " +
           tail + ");\n";
}

std::string text_of(const Function& function) {
    std::string head = "static inline bool orvanel_" + function.name + "(orvanel_out *out";
    for (const std::string& number : function.numbers)
        head += ", int " + number;
    head += tail_parameters(function) + ")";
    return "/* " + function.note + ". */\n" + wrapped(head) + "\n{\n" + body_of(function) + "}\n\n";
}

/// One command with a letter for what it does, each a function of its own.
constexpr std::string_view eeprom_functions = R"(/* EEPROM: the module sends `length` bytes. */
static inline bool orvanel_eeprom_read(orvanel_out *out, uint16_t address, uint16_t length)
{
    const int numbers[] = {address & 0xFF, address >> 8, length & 0xFF, length >> 8, 'R'};
    return orvanel_command(out, "&E", numbers, 5, NULL, 0);
}

/* EEPROM: at most 65535 bytes to this place. */
static inline bool orvanel_eeprom_write(orvanel_out *out, uint16_t address, const void *data,
                                        size_t size)
{
    const int high = size > 0xFFFF ? -1 : (int)(size >> 8);
    const int numbers[] = {address & 0xFF, address >> 8, (int)(size & 0xFF), high, 'W'};
    return orvanel_command(out, "&E", numbers, 5, data, size);
}

/* EEPROM: clears `length` bytes, writes the checksum and restarts the module. */
static inline bool orvanel_eeprom_clear(orvanel_out *out, uint16_t address, uint16_t length)
{
    const int numbers[] = {address & 0xFF, address >> 8, length & 0xFF, length >> 8, 'C'};
    return orvanel_command(out, "&E", numbers, 5, NULL, 0);
}

/* EEPROM: the module restarts with what has been written. */
static inline bool orvanel_eeprom_restart(orvanel_out *out)
{
    const int numbers[] = {0, 0, 0, 0, 'J'};
    return orvanel_command(out, "&E", numbers, 5, NULL, 0);
}

)";

std::string functions() {
    std::string text;
    for (const CommandRow& row : command_rows)
        text += is_eeprom(row) ? std::string(eeprom_functions) : text_of(function_of(row));
    return text;
}

// The calls for the tests.

/// Text, bytes and a picture of 9 x 1 dots, as arguments in C and as a kit writes them.
struct Sample {
    std::string_view argument, words;
};

Sample sample_of(Read tail) {
    switch (tail) {
    case Read::none:
        return {};
    case Read::raw_picture:
        return {", (const uint8_t *)\"\\x09\\x01\\xAA\\x80\", 4", "0901AA80"};
    case Read::raw_bytes:
        return {", \"\\x00\\x1B\\xFF\", 3", "001BFF"};
    default:
        return {", \"C~Two|\\xF8@words\"", R"(\"C~Two|\\xF8@words\")"};
    }
}

std::string call_of(const std::string& name, const std::string& arguments,
                    const std::string& line) {
    return "    CALL(\"" + line + "\", orvanel_" + name + "(&out" + arguments + "));\n";
}

/// A different number for each parameter, the extremes among them.
int sample_number(std::size_t i) { return i == 0 ? 255 : static_cast<int>(7 * i); }

std::string call_of(const CommandRow& row) {
    const Function function = function_of(row);
    std::string arguments, words;
    for (std::size_t i = 0; i < function.numbers.size(); ++i) {
        const std::string number = std::to_string(sample_number(i));
        arguments += ", " + number;
        words += (i == 0 ? " " : ",") + number;
    }
    const auto [argument, tail] = sample_of(function.tail);
    arguments += argument;
    if (!tail.empty()) words += (words.empty() ? " " : ",") + std::string(tail);
    return call_of(function.name, arguments, "ESC " + function.letters + words);
}

std::string eeprom_calls() {
    return call_of("eeprom_read", ", 0x1234, 0xFFFE", "ESC &E $1234,$FFFE,R") +
           call_of("eeprom_write", ", 0x0E30, \"\\x01\\x02\\x03\", 3", "ESC &E $0E30,W,010203") +
           call_of("eeprom_clear", ", 0x8001, 0x0102", "ESC &E $8001,$0102,C") +
           call_of("eeprom_restart", "", "ESC &E 0,0,J");
}

std::string calls() {
    std::string text;
    for (const CommandRow& row : command_rows)
        text += is_eeprom(row) ? eeprom_calls() : call_of(row);
    return text;
}

int fail(const char* file, const char* message) {
    std::fprintf(stderr, "%s: error: %s\n", file, message);
    return 1;
}

int write(const char* path, const std::string& text) {
    std::ofstream out(path, std::ios::binary);
    out << text;
    out.close();
    return out ? 0 : fail(path, "cannot write");
}

int write_header(const char* from, std::string_view version, const char* path) {
    std::ifstream in(from, std::ios::binary);
    if (!in) return fail(from, "cannot open");
    std::string text{std::istreambuf_iterator<char>(in), {}};
    for (const auto& [mark, words] : {std::pair{std::string("@VERSION@"), std::string(version)},
                                      std::pair{std::string("@COMMANDS@\n"), functions()}}) {
        const std::size_t at = text.find(mark);
        if (at == std::string::npos) return fail(from, ("has no " + mark).c_str());
        text.replace(at, mark.size(), words);
    }
    return write(path, text);
}

}  // namespace
}  // namespace orvanel

int main(int argc, char** argv) {
    if (argc == 3 && std::string_view(argv[1]) == "--calls")
        return orvanel::write(argv[2], orvanel::calls());
    if (argc != 4)
        return orvanel::fail("write_header", "takes TEMPLATE VERSION OUT.h, or --calls OUT.inc");
    return orvanel::write_header(argv[1], argv[2], argv[3]);
}
