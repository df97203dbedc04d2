#include "kit/forms.h"

#include <algorithm>

namespace orvanel {

namespace {

constexpr Tail tail_of(Read read) {
    switch (read) {
    case Read::raw_string:
    case Read::raw_text:
        return Tail::string;
    case Read::raw_picture:
        return Tail::picture;
    case Read::raw_byte:
        return Tail::byte;
    case Read::raw_bytes:
        return Tail::counted;
    case Read::raw_word:
        return Tail::eeprom;
    default:
        return Tail::none;
    }
}

constexpr Form form_of(const CommandRow& row) {
    Form form{row.group, row.op, Tail::none, {}, &row};
    std::size_t count = 0;
    for (const Parameter& parameter : row.parameters) {
        for (int i = 0; i < numbers_of(parameter.read); ++i)
            form.params[count++] = {parameter.names[static_cast<std::size_t>(i)], parameter.kind};
        if (!is_raw(parameter.read)) continue;
        form.tail = tail_of(parameter.read);
        // The bytes of a kit count themselves.
        if (form.tail == Tail::counted) form.params[--count] = {};
        break;
    }
    return form;
}

constexpr std::array<Form, command_count> forms = [] {
    std::array<Form, command_count> made{};
    std::ranges::transform(command_rows, made.begin(), form_of);
    return made;
}();

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

/// Skips to a digit or $, and takes the one byte after the number too.
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
        if (ends_text(static_cast<std::uint8_t>(c))) break;
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
    const auto letter = static_cast<std::uint8_t>(group_letter);
    const int number = is_command_group(letter) ? command_number(letter, op) : -1;
    return number < 0 ? nullptr : &forms[static_cast<std::size_t>(number)];
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
    ByteReader reader{bytes, 1, bytes[0] != lead_in_esc, true};
    Parsed parsed{};
    const char group_letter = take_letter(reader);
    parsed.form = find_form(group_letter, 0);
    if (parsed.form == nullptr && is_command_group(static_cast<std::uint8_t>(group_letter))) {
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
    if (bytes.size() < picture_head_size) return -1;
    return picture_head_size + stride_of(bytes[0]) * picture_rows(bytes[1]);
}

}  // namespace orvanel
