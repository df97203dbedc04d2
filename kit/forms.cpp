#include "kit/forms.h"

#include <algorithm>

namespace orvanel {

namespace {

constexpr std::uint8_t esc = 0x1B;

// clang-format off
constexpr Param number(const char* name) { return {name, Kind::number}; }
constexpr Param n = number("n"), x = number("x"), y = number("y"),
    x1 = number("x1"), y1 = number("y1"), x2 = number("x2"), y2 = number("y2"),
    zx = number("zoom x"), zy = number("zoom y"), bar = number("bar"), time = number("time"),
    erase = number("erase"), group = number("group"), least = number("least"),
    most = number("most"), kind = number("kind"), pattern = number("pattern"),
    process = number("process"), row = number("row"),
    font{"font", Kind::font}, picture{"picture", Kind::picture},
    normal{"macro", Kind::normal}, first{"first macro", Kind::normal},
    last{"last macro", Kind::normal}, touch{"macro", Kind::touch}, menu{"macro", Kind::menu},
    code{"code", Kind::touch}, down{"down code", Kind::touch}, up{"up code", Kind::touch},
    list{"list code", Kind::menu};

constexpr Form forms[]{
    {'!', 0,    Tail::none,     {n}},
    {'&', 'E',  Tail::eeprom,   {}},
    {'+', 0,    Tail::none,     {n}},
    {'=', 0,    Tail::none,     {}},
    {'@', 0,    Tail::none,     {}},
    {'?', 0,    Tail::none,     {}},
    {'X', 0,    Tail::none,     {time}},
    {'A', 'A',  Tail::none,     {n}},
    {'A', 'B',  Tail::none,     {bar}},
    {'A', 'D',  Tail::none,     {x1, y1, x2, y2, number("pen")}},
    {'A', 'E',  Tail::none,     {number("border")}},
    {'A', 'F',  Tail::none,     {font}},
    {'A', 'G',  Tail::none,     {group}},
    {'A', 'H',  Tail::none,     {x1, y1, x2, y2}},
    {'A', 'I',  Tail::none,     {n}},
    {'A', 'J',  Tail::string,   {x, y, picture, down, up}},
    {'A', 'K',  Tail::string,   {x1, y1, x2, y2, down, up}},
    {'A', 'L',  Tail::none,     {code, erase}},
    {'A', 'M',  Tail::string,   {x1, y1, x2, y2, down, up, list}},
    {'A', 'N',  Tail::none,     {code}},
    {'A', 'P',  Tail::none,     {code, n}},
    {'A', 'Q',  Tail::none,     {n}},
    {'A', 'R',  Tail::none,     {group}},
    {'A', 'S',  Tail::none,     {n}},
    {'A', 'T',  Tail::string,   {x1, y1, x2, y2, down, up}},
    {'A', 'U',  Tail::string,   {x, y, picture, down, up}},
    {'A', 'V',  Tail::none,     {x, y, erase}},
    {'A', 'W',  Tail::none,     {n}},
    {'A', 'X',  Tail::none,     {code}},
    {'A', 'Y',  Tail::none,     {n}},
    {'A', 'Z',  Tail::none,     {zx, zy}},
    {'B', 'A',  Tail::none,     {bar, number("value")}},
    {'B', 'D',  Tail::none,     {bar, erase}},
    {'B', 'L',  Tail::none,     {bar, x1, y1, x2, y2, least, most, kind, pattern}},
    {'B', 'O',  Tail::none,     {bar, x1, y1, x2, y2, least, most, kind, pattern}},
    {'B', 'R',  Tail::none,     {bar, x1, y1, x2, y2, least, most, kind, pattern}},
    {'B', 'U',  Tail::none,     {bar, x1, y1, x2, y2, least, most, kind, pattern}},
    {'B', 'S',  Tail::none,     {bar}},
    {'B', 'Z',  Tail::none,     {bar}},
    {'C', 'B',  Tail::none,     {}},
    {'C', 'S',  Tail::none,     {x1, y1, x2, y2}},
    {'C', 'K',  Tail::none,     {x, y}},
    {'C', 'R',  Tail::none,     {}},
    {'D', 'A',  Tail::none,     {}},
    {'D', 'E',  Tail::none,     {}},
    {'D', 'C',  Tail::none,     {}},
    {'D', 'N',  Tail::none,     {}},
    {'D', 'I',  Tail::none,     {}},
    {'D', 'L',  Tail::none,     {}},
    {'D', 'S',  Tail::none,     {}},
    {'G', 'D',  Tail::none,     {x1, y1, x2, y2}},
    {'G', 'P',  Tail::none,     {x, y}},
    {'G', 'R',  Tail::none,     {x1, y1, x2, y2}},
    {'G', 'V',  Tail::none,     {number("link mode")}},
    {'G', 'W',  Tail::none,     {x, y}},
    {'G', 'Z',  Tail::none,     {number("width"), number("height")}},
    {'K', 'A',  Tail::none,     {number("address")}},
    {'M', 'N',  Tail::none,     {normal}},
    {'M', 'T',  Tail::none,     {touch}},
    {'M', 'M',  Tail::none,     {menu}},
    {'M', 'A',  Tail::none,     {first, last, time}},
    {'M', 'J',  Tail::none,     {first, last, time}},
    {'M', 'E',  Tail::none,     {first, last, time}},
    {'M', 'G',  Tail::none,     {normal, time}},
    {'M', 'D',  Tail::none,     {process, kind, first, last, time}},
    {'M', 'Z',  Tail::none,     {process, time}},
    {'M', 'S',  Tail::none,     {n}},
    {'N', 'A',  Tail::none,     {}},
    {'N', 'D',  Tail::string,   {x, y, row}},
    {'N', 'F',  Tail::none,     {font}},
    {'N', 'M',  Tail::none,     {menu}},
    {'N', 'N',  Tail::none,     {}},
    {'N', 'P',  Tail::none,     {}},
    {'N', 'S',  Tail::none,     {}},
    {'N', 'T',  Tail::none,     {n}},
    {'N', 'W',  Tail::none,     {n}},
    {'N', 'Y',  Tail::none,     {n}},
    {'N', 'Z',  Tail::none,     {zx, zy}},
    {'Q', 'I',  Tail::none,     {x1, y1, x2, y2}},
    {'Q', 'L',  Tail::none,     {x1, y1, x2, y2}},
    {'Q', 'M',  Tail::none,     {x1, y1, x2, y2, pattern}},
    {'Q', 'Z',  Tail::none,     {time}},
    {'R', 'L',  Tail::none,     {x1, y1, x2, y2}},
    {'R', 'S',  Tail::none,     {x1, y1, x2, y2}},
    {'R', 'I',  Tail::none,     {x1, y1, x2, y2}},
    {'R', 'M',  Tail::none,     {x1, y1, x2, y2, pattern}},
    {'R', 'O',  Tail::none,     {x1, y1, x2, y2, pattern}},
    {'R', 'R',  Tail::none,     {x1, y1, x2, y2, number("border")}},
    {'R', 'T',  Tail::none,     {x1, y1, x2, y2, number("border")}},
    {'S', 'B',  Tail::counted,  {}},
    {'S', 'I',  Tail::none,     {}},
    {'S', 'V',  Tail::none,     {}},
    {'T', 'A',  Tail::none,     {}},
    {'T', 'E',  Tail::none,     {}},
    {'T', 'C',  Tail::none,     {n}},
    {'T', 'P',  Tail::none,     {number("column"), row}},
    {'T', 'Q',  Tail::none,     {}},
    {'T', 'R',  Tail::none,     {}},
    {'T', 'S',  Tail::none,     {}},
    {'T', 'V',  Tail::none,     {}},
    {'U', 'B',  Tail::none,     {n}},
    {'U', 'C',  Tail::none,     {x, y}},
    {'U', 'H',  Tail::none,     {x1, y1, x2, y2}},
    {'U', 'I',  Tail::none,     {x, y, picture}},
    {'U', 'L',  Tail::picture,  {x, y}},
    {'U', 'V',  Tail::none,     {number("link mode")}},
    {'U', 'W',  Tail::none,     {n}},
    {'U', 'Z',  Tail::none,     {zx, zy}},
    {'Y', 'H',  Tail::none,     {number("brightness")}},
    {'Y', 'L',  Tail::byte,     {}},
    {'Y', 'S',  Tail::none,     {time}},
    {'Y', 'W',  Tail::none,     {number("line"), n}},
    {'Z', 'L',  Tail::string,   {x, y}},
    {'Z', 'C',  Tail::string,   {x, y}},
    {'Z', 'R',  Tail::string,   {x, y}},
    {'Z', 'B',  Tail::none,     {n}},
    {'Z', 'F',  Tail::none,     {font}},
    {'Z', 'V',  Tail::none,     {number("link mode")}},
    {'Z', 'W',  Tail::none,     {n}},
    {'Z', 'Y',  Tail::none,     {n}},
    {'Z', 'Z',  Tail::none,     {zx, zy}},
};
// clang-format on

constexpr std::string_view groups_with_ops = "&ABCDGKMNQRSTUYZ";

/// Reads a stream; `good` turns false at its end and stays so.
struct ByteReader {
    std::span<const std::uint8_t> bytes;
    std::size_t at;
    bool numbers;  // parameters are ASCII numbers
    bool good;
};

int take_byte(ByteReader& reader) {
    if (reader.at >= reader.bytes.size()) {
        reader.good = false;
        return 0;
    }
    return reader.bytes[reader.at++];
}

char take_letter(ByteReader& reader) {
    const int c = take_byte(reader);
    return static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
}

/// The value of a digit below `base`, -1 for any other byte.
int digit_of(int c, int base) {
    int digit = -1;
    if (c >= '0' && c <= '9') digit = c - '0';
    if (c >= 'A' && c <= 'F') digit = c - 'A' + 10;
    if (c >= 'a' && c <= 'f') digit = c - 'a' + 10;
    return digit < base ? digit : -1;
}

/// Skips to a digit or $, and takes the one byte behind the number too.
int take_param(ByteReader& reader) {
    if (!reader.numbers) return take_byte(reader);
    int c = take_byte(reader);
    while (reader.good && c != '$' && digit_of(c, 10) < 0)
        c = take_byte(reader);
    const int base = c == '$' ? 16 : 10;
    unsigned value = 0;
    if (c == '$') c = take_byte(reader);
    for (; reader.good && digit_of(c, base) >= 0; c = take_byte(reader))
        value = value * static_cast<unsigned>(base) + static_cast<unsigned>(digit_of(c, base));
    return static_cast<int>(value & 0xFF);
}

int take_pair(ByteReader& reader) {
    const int low = take_byte(reader);
    return low | take_byte(reader) << 8;
}

void take_bytes(ByteReader& reader, std::size_t count, Parsed& parsed) {
    parsed.tail_at = reader.at;
    parsed.tail_size = count;
    reader.good = reader.good && reader.bytes.size() - reader.at >= count;
    if (reader.good) reader.at += count;
}

void take_string(ByteReader& reader, Parsed& parsed) {
    parsed.tail_at = reader.at;
    while (reader.good) {
        const int c = take_byte(reader);
        if (c == 0 || c == '\n' || c == '\r') break;
    }
    if (reader.good) parsed.tail_size = reader.at - 1 - parsed.tail_at;
}

void take_eeprom(ByteReader& reader, Parsed& parsed) {
    parsed.address = take_pair(reader);
    parsed.length = take_pair(reader);
    parsed.operation = static_cast<char>(take_byte(reader));
    if (parsed.operation == 'W')
        take_bytes(reader, static_cast<std::size_t>(parsed.length), parsed);
}

void take_tail(ByteReader& reader, Parsed& parsed) {
    switch (parsed.form->tail) {
    case Tail::none:
        return;
    case Tail::string:
        return take_string(reader, parsed);
    case Tail::picture: {
        const int size = streamed_picture_size(reader.bytes.subspan(reader.at));
        reader.good = reader.good && size >= 0;
        if (reader.good) take_bytes(reader, static_cast<std::size_t>(size), parsed);
        return;
    }
    case Tail::byte:
        return take_bytes(reader, 1, parsed);
    case Tail::counted: {
        const int count = take_param(reader);
        return take_bytes(reader, static_cast<std::size_t>(count), parsed);
    }
    case Tail::eeprom:
        return take_eeprom(reader, parsed);
    }
}

}  // namespace

const Form* find_form(char group_letter, char op) {
    const auto found = std::find_if(std::begin(forms), std::end(forms), [&](const Form& form) {
        return form.group == group_letter && form.op == op;
    });
    return found == std::end(forms) ? nullptr : found;
}

std::string ops_of(char group_letter) {
    std::string ops;
    for (const Form& form : forms)
        if (form.group == group_letter && form.op != 0) ops += form.op;
    std::sort(ops.begin(), ops.end());
    return ops;
}

std::span<const Form> all_forms() { return forms; }

int param_count(const Form& form) {
    const auto end = std::find_if(form.params.begin(), form.params.end(),
                                  [](const Param& param) { return param.name == nullptr; });
    return static_cast<int>(end - form.params.begin());
}

std::string letters_of(const Form& form) {
    std::string text = {'E', 'S', 'C', ' ', form.group};
    if (form.op != 0) text += {' ', form.op};
    return text;
}

std::optional<Parsed> parse_command(std::span<const std::uint8_t> bytes) {
    ByteReader reader{bytes, 1, bytes[0] != esc, true};
    Parsed parsed{};
    const char group_letter = take_letter(reader);
    parsed.form = find_form(group_letter, 0);
    if (parsed.form == nullptr && groups_with_ops.find(group_letter) != std::string_view::npos) {
        parsed.form = find_form(group_letter, take_letter(reader));
        // Group R takes its rectangle before it looks at the op.
        if (parsed.form == nullptr && group_letter == 'R')
            for (int i = 0; i < 4; ++i)
                take_param(reader);
    }
    if (parsed.form != nullptr) {
        for (int i = 0; i < param_count(*parsed.form); ++i)
            parsed.params[static_cast<std::size_t>(i)] = take_param(reader);
        take_tail(reader, parsed);
    }
    parsed.size = reader.at;
    if (!reader.good) return std::nullopt;
    return parsed;
}

int streamed_picture_size(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < 2) return -1;
    const int rows = bytes[1] > 128 ? bytes[1] & 0x7F : bytes[1];
    return 2 + (bytes[0] + 7) / 8 * rows;
}

}  // namespace orvanel
