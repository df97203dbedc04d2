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
    {'!', 0,   {n},                                    Tail::none},
    {'&', 'E', {},                                     Tail::eeprom},
    {'+', 0,   {n},                                    Tail::none},
    {'=', 0,   {},                                     Tail::none},
    {'@', 0,   {},                                     Tail::none},
    {'?', 0,   {},                                     Tail::none},
    {'X', 0,   {time},                                 Tail::none},
    {'A', 'A', {n},                                    Tail::none},
    {'A', 'B', {bar},                                  Tail::none},
    {'A', 'D', {x1, y1, x2, y2, number("pen")},        Tail::none},
    {'A', 'E', {number("border")},                     Tail::none},
    {'A', 'F', {font},                                 Tail::none},
    {'A', 'G', {group},                                Tail::none},
    {'A', 'H', {x1, y1, x2, y2},                       Tail::none},
    {'A', 'I', {n},                                    Tail::none},
    {'A', 'J', {x, y, picture, down, up},              Tail::string},
    {'A', 'K', {x1, y1, x2, y2, down, up},             Tail::string},
    {'A', 'L', {code, erase},                          Tail::none},
    {'A', 'M', {x1, y1, x2, y2, down, up, list},       Tail::string},
    {'A', 'N', {code},                                 Tail::none},
    {'A', 'P', {code, n},                              Tail::none},
    {'A', 'Q', {n},                                    Tail::none},
    {'A', 'R', {group},                                Tail::none},
    {'A', 'S', {n},                                    Tail::none},
    {'A', 'T', {x1, y1, x2, y2, down, up},             Tail::string},
    {'A', 'U', {x, y, picture, down, up},              Tail::string},
    {'A', 'V', {x, y, erase},                          Tail::none},
    {'A', 'W', {n},                                    Tail::none},
    {'A', 'X', {code},                                 Tail::none},
    {'A', 'Y', {n},                                    Tail::none},
    {'A', 'Z', {zx, zy},                               Tail::none},
    {'B', 'A', {bar, number("value")},                 Tail::none},
    {'B', 'D', {bar, erase},                           Tail::none},
    {'B', 'L', {bar, x1, y1, x2, y2, least, most, kind, pattern}, Tail::none},
    {'B', 'O', {bar, x1, y1, x2, y2, least, most, kind, pattern}, Tail::none},
    {'B', 'R', {bar, x1, y1, x2, y2, least, most, kind, pattern}, Tail::none},
    {'B', 'U', {bar, x1, y1, x2, y2, least, most, kind, pattern}, Tail::none},
    {'B', 'S', {bar},                                  Tail::none},
    {'B', 'Z', {bar},                                  Tail::none},
    {'C', 'B', {},                                     Tail::none},
    {'C', 'S', {x1, y1, x2, y2},                       Tail::none},
    {'C', 'K', {x, y},                                 Tail::none},
    {'C', 'R', {},                                     Tail::none},
    {'D', 'A', {},                                     Tail::none},
    {'D', 'E', {},                                     Tail::none},
    {'D', 'C', {},                                     Tail::none},
    {'D', 'N', {},                                     Tail::none},
    {'D', 'I', {},                                     Tail::none},
    {'D', 'L', {},                                     Tail::none},
    {'D', 'S', {},                                     Tail::none},
    {'G', 'D', {x1, y1, x2, y2},                       Tail::none},
    {'G', 'P', {x, y},                                 Tail::none},
    {'G', 'R', {x1, y1, x2, y2},                       Tail::none},
    {'G', 'V', {number("link mode")},                  Tail::none},
    {'G', 'W', {x, y},                                 Tail::none},
    {'G', 'Z', {number("width"), number("height")},    Tail::none},
    {'K', 'A', {number("address")},                    Tail::none},
    {'M', 'N', {normal},                               Tail::none},
    {'M', 'T', {touch},                                Tail::none},
    {'M', 'M', {menu},                                 Tail::none},
    {'M', 'A', {first, last, time},                    Tail::none},
    {'M', 'J', {first, last, time},                    Tail::none},
    {'M', 'E', {first, last, time},                    Tail::none},
    {'M', 'G', {normal, time},                         Tail::none},
    {'M', 'D', {process, kind, first, last, time},     Tail::none},
    {'M', 'Z', {process, time},                        Tail::none},
    {'M', 'S', {n},                                    Tail::none},
    {'N', 'A', {},                                     Tail::none},
    {'N', 'D', {x, y, row},                            Tail::string},
    {'N', 'F', {font},                                 Tail::none},
    {'N', 'M', {menu},                                 Tail::none},
    {'N', 'N', {},                                     Tail::none},
    {'N', 'P', {},                                     Tail::none},
    {'N', 'S', {},                                     Tail::none},
    {'N', 'T', {n},                                    Tail::none},
    {'N', 'W', {n},                                    Tail::none},
    {'N', 'Y', {n},                                    Tail::none},
    {'N', 'Z', {zx, zy},                               Tail::none},
    {'Q', 'I', {x1, y1, x2, y2},                       Tail::none},
    {'Q', 'L', {x1, y1, x2, y2},                       Tail::none},
    {'Q', 'M', {x1, y1, x2, y2, pattern},              Tail::none},
    {'Q', 'Z', {time},                                 Tail::none},
    {'R', 'L', {x1, y1, x2, y2},                       Tail::none},
    {'R', 'S', {x1, y1, x2, y2},                       Tail::none},
    {'R', 'I', {x1, y1, x2, y2},                       Tail::none},
    {'R', 'M', {x1, y1, x2, y2, pattern},              Tail::none},
    {'R', 'O', {x1, y1, x2, y2, pattern},              Tail::none},
    {'R', 'R', {x1, y1, x2, y2, number("border")},     Tail::none},
    {'R', 'T', {x1, y1, x2, y2, number("border")},     Tail::none},
    {'S', 'B', {},                                     Tail::counted},
    {'S', 'I', {},                                     Tail::none},
    {'S', 'V', {},                                     Tail::none},
    {'T', 'A', {},                                     Tail::none},
    {'T', 'E', {},                                     Tail::none},
    {'T', 'C', {n},                                    Tail::none},
    {'T', 'P', {number("column"), row},                Tail::none},
    {'T', 'Q', {},                                     Tail::none},
    {'T', 'R', {},                                     Tail::none},
    {'T', 'S', {},                                     Tail::none},
    {'T', 'V', {},                                     Tail::none},
    {'U', 'B', {n},                                    Tail::none},
    {'U', 'C', {x, y},                                 Tail::none},
    {'U', 'H', {x1, y1, x2, y2},                       Tail::none},
    {'U', 'I', {x, y, picture},                        Tail::none},
    {'U', 'L', {x, y},                                 Tail::picture},
    {'U', 'V', {number("link mode")},                  Tail::none},
    {'U', 'W', {n},                                    Tail::none},
    {'U', 'Z', {zx, zy},                               Tail::none},
    {'Y', 'H', {number("brightness")},                 Tail::none},
    {'Y', 'L', {},                                     Tail::byte},
    {'Y', 'S', {time},                                 Tail::none},
    {'Y', 'W', {number("line"), n},                    Tail::none},
    {'Z', 'L', {x, y},                                 Tail::string},
    {'Z', 'C', {x, y},                                 Tail::string},
    {'Z', 'R', {x, y},                                 Tail::string},
    {'Z', 'B', {n},                                    Tail::none},
    {'Z', 'F', {font},                                 Tail::none},
    {'Z', 'V', {number("link mode")},                  Tail::none},
    {'Z', 'W', {n},                                    Tail::none},
    {'Z', 'Y', {n},                                    Tail::none},
    {'Z', 'Z', {zx, zy},                               Tail::none},
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
