#include "kit/commands.h"

#include "base/bytes.h"
#include "base/hex.h"
#include "base/quoting.h"
#include "kit/code_page.h"

#include <algorithm>

namespace orvanel {

namespace {

constexpr std::size_t bytes_a_line = 32;

/// One command on its way to bytes.
struct Writer {
    Scanner* scanner;
    const Assembly* assembly;
    const Form* form;
    bool numbers;  // parameters become ASCII numbers
    bool first;    // nothing stands after the letters yet
    Bytes* bytes;
    Columns* columns;  // null: nobody asks for them
    Scanner from;      // where what comes next is written
};

void append(Bytes& bytes, std::span<const std::uint8_t> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

void append_pair(Bytes& bytes, int value) {
    bytes.push_back(low8(value));
    bytes.push_back(low8(value >> 8));
}

/// All bytes that have no column yet were written at `from`.
void note_from(Writer& writer) {
    if (writer.columns != nullptr) note_column(*writer.columns, writer.from, writer.bytes->size());
}

/// Bytes as take_bytes or take_text has them.
struct Taken {
    Bytes bytes;
    Columns columns;
};

void put_taken(Writer& writer, const Taken& taken) {
    note_from(writer);
    append(*writer.bytes, taken.bytes);
    if (writer.columns != nullptr)
        writer.columns->list.insert(writer.columns->list.end(), taken.columns.list.begin(),
                                    taken.columns.list.end());
}

void put_number(Writer& writer, int value, char end) {
    if (!writer.numbers) {
        writer.bytes->push_back(low8(value));
    } else {
        for (const char digit : std::to_string(value))
            writer.bytes->push_back(static_cast<std::uint8_t>(digit));
        writer.bytes->push_back(static_cast<std::uint8_t>(end));
    }
    note_from(writer);
}

/// The words of a command's parameters, and `tail` for what comes after the numbers.
std::string parameters_of(const Form& form, std::string_view tail, const char* between) {
    std::string words;
    for (int i = 0; i < param_count(form); ++i)
        words +=
            (i == 0 ? "" : between) + std::string(form.params[static_cast<std::size_t>(i)].name);
    if (!words.empty() && !tail.empty()) words += between;
    return words.append(tail);
}

/// The names of the raw parameters, but for the data of a write, which stand in another's place.
std::string raw_names_of(const Form& form) {
    std::string names;
    for (const Parameter& parameter : form.row->parameters)
        if (is_raw(parameter.read) && parameter.read != Read::raw_data)
            names += (names.empty() ? "" : ",") + std::string(parameter.names[0]);
    return names;
}

/// What a command takes, for messages.
std::string usage_of(const Form& form) {
    constexpr std::string_view tails[]{"",       "a text", "a picture",
                                       "a byte", "bytes",  "address, length, R, C or J"};
    const std::string words = parameters_of(form, tails[static_cast<std::size_t>(form.tail)], ", ");
    return letters_of(form) + " takes " + (words.empty() ? "nothing" : words);
}

/// Numbers need a comma between them; in front of a text it may be left out.
void step_over_comma(Writer& writer, bool needed) {
    Scanner& scanner = *writer.scanner;
    if (writer.first) {
        writer.first = false;
        return;
    }
    if (take_char(scanner, ',') || !needed) return;
    fail(scanner, "expected a comma; " + usage_of(*writer.form));
}

/// To what stands after the numbers. Throws if nothing does.
Scanner start_of_tail(Writer& writer) {
    step_over_comma(writer, false);
    if (peek(*writer.scanner) == 0)
        fail(*writer.scanner, "the rest is missing; " + usage_of(*writer.form));
    writer.from = *writer.scanner;
    return writer.from;
}

int take_param(Writer& writer, const Param& param, int max) {
    step_over_comma(writer, true);
    Scanner& scanner = *writer.scanner;
    if (peek(scanner) == 0)
        fail(scanner, std::string(param.name) + " is missing; " + usage_of(*writer.form));
    writer.from = scanner;
    return take_sum(scanner, *writer.assembly->names, param.kind, param.name, 0, max);
}

void put_string(Writer& writer) {
    const Scanner start = start_of_tail(writer);
    Taken text;
    text.bytes = take_text(*writer.scanner, &text.columns);
    if (std::any_of(text.bytes.begin(), text.bytes.end(), ends_text))
        fail(start, "the text ends at its first zero, line feed or return; leave that out");
    put_taken(writer, text);
    writer.bytes->push_back(writer.numbers ? '\n' : 0);
}

void put_picture(Writer& writer) {
    const Scanner start = start_of_tail(writer);
    Scanner& scanner = *writer.scanner;
    Taken taken;
    Bytes& picture = taken.bytes;
    if (take_name(scanner) == "picture") {
        const int number = take_sum(scanner, *writer.assembly->names, Kind::picture, "picture", 0,
                                    table_of(Kind::picture).max);
        picture = writer.assembly->picture(number);
        if (picture.empty()) fail(start, "there is no picture " + std::to_string(number));
        append(*writer.bytes, picture);
    } else {
        scanner = start;
        picture = take_bytes(scanner, &taken.columns);
        const int size = streamed_picture_size(picture);
        if (size < 0)
            fail(start, "expected width, height and rows as bytes, or the word picture and a name");
        if (std::ssize(picture) != size)
            fail(start, "these are " + std::to_string(picture.size()) +
                            " bytes, and a picture of that width and height takes " +
                            std::to_string(size));
        put_taken(writer, taken);
    }
}

void put_counted(Writer& writer) {
    const Scanner start = start_of_tail(writer);
    Taken taken;
    taken.bytes = take_bytes(*writer.scanner, &taken.columns);
    if (taken.bytes.size() > 255) fail(start, "these are more than 255 bytes");
    put_number(writer, static_cast<int>(taken.bytes.size()), ',');
    put_taken(writer, taken);
}

void put_eeprom(Writer& writer) {
    constexpr int max = 0xFFFF;
    Scanner& scanner = *writer.scanner;
    append_pair(*writer.bytes, take_param(writer, {"address", Kind::number}, max));
    expect_char(scanner, ',');
    Scanner ahead = scanner;
    if (take_name(ahead) == "W") {
        scanner = ahead;
        take_char(scanner, ',');
        const Scanner start = scanner;
        Taken data;
        data.bytes = take_bytes(scanner, &data.columns);
        if (data.bytes.size() > max) fail(start, "these are more than 65535 bytes");
        append_pair(*writer.bytes, static_cast<int>(data.bytes.size()));
        writer.bytes->push_back('W');
        put_taken(writer, data);
        return;
    }
    append_pair(*writer.bytes,
                take_sum(scanner, *writer.assembly->names, Kind::number, "length or W", 0, max));
    expect_char(scanner, ',');
    peek(scanner);
    const Scanner start = scanner;
    const std::string_view letter = take_name(scanner);
    if (letter != "R" && letter != "C" && letter != "J") fail(start, "expected R, C or J");
    writer.bytes->push_back(static_cast<std::uint8_t>(letter.front()));
}

void put_tail(Writer& writer) {
    switch (writer.form->tail) {
    case Tail::none:
        return;
    case Tail::string:
        return put_string(writer);
    case Tail::picture:
        return put_picture(writer);
    case Tail::byte:
        return writer.bytes->push_back(low8(take_param(writer, {"byte", Kind::number}, 255)));
    case Tail::counted:
        return put_counted(writer);
    case Tail::eeprom:
        return put_eeprom(writer);
    }
}

char take_letter(Scanner& scanner) {
    const char c = peek(scanner);
    if (c == 0) return 0;
    ++scanner.at;
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

const Form& take_form(Scanner& scanner) {
    peek(scanner);
    const Scanner start = scanner;
    const char group = take_letter(scanner);
    if (group == 0) fail(start, "expected the letters of a command");
    if (const Form* form = find_form(group, 0)) return *form;
    const std::string ops = ops_of(group);
    if (ops.empty()) fail(start, "there is no command group " + printable({&group, 1}));
    peek(scanner);
    const Scanner second = scanner;
    const char op = take_letter(scanner);
    if (const Form* form = find_form(group, op)) return *form;
    fail(second, "group " + std::string(1, group) + " has the commands " + ops);
}

void assemble_command(Scanner& scanner, std::uint8_t lead_in, const Assembly& assembly,
                      Bytes& bytes, Columns* columns) {
    Scanner start{scanner.line, 0};
    skip_blanks(start);
    const Form& form = take_form(scanner);
    bytes.push_back(lead_in);
    bytes.push_back(static_cast<std::uint8_t>(form.group));
    if (form.op != 0) bytes.push_back(static_cast<std::uint8_t>(form.op));
    Writer writer{&scanner, &assembly, &form,   lead_in == lead_in_hash,
                  true,     &bytes,    columns, start};
    note_from(writer);
    const int count = param_count(form);
    for (int i = 0; i < count; ++i) {
        const int value = take_param(writer, form.params[static_cast<std::size_t>(i)], 255);
        put_number(writer, value, i + 1 == count && form.tail == Tail::none ? ';' : ',');
    }
    put_tail(writer);
    note_from(writer);
    if (peek(scanner) != 0) fail(scanner, "expected the end of the line; " + usage_of(form));
}

std::string hex_line(std::string_view word, std::span<const std::uint8_t> bytes) {
    return std::string(word) + hex_of(bytes);
}

/// Bytes that are no command: as text where they can be read, else in hexadecimal.
void append_plain(std::vector<std::string>& lines, std::span<const std::uint8_t> bytes) {
    const auto readable = [](std::uint8_t c) {
        return c >= ' ' || c == '\n' || c == '\r' || c == '\f';
    };
    while (!bytes.empty()) {
        const bool text = readable(bytes[0]);
        std::size_t size = 0;
        while (size < bytes.size() && readable(bytes[size]) == text &&
               size < (text ? 3 * bytes_a_line : bytes_a_line)) {
            ++size;
            if (text && bytes[size - 1] == '\n') break;  // a line here for each on the glass
        }
        const auto piece = bytes.first(size);
        lines.push_back(text ? "text " + text_of(piece) : hex_line("bytes", piece));
        bytes = bytes.subspan(size);
    }
}

std::string tail_text(const Parsed& parsed, std::span<const std::uint8_t> tail) {
    switch (parsed.form->tail) {
    case Tail::none:
        return "";
    case Tail::string:
        return text_of(tail);
    case Tail::picture:
        return hex_of(tail, " ");
    case Tail::byte:
        return std::to_string(tail[0]);
    case Tail::counted: {
        const bool text = std::all_of(tail.begin(), tail.end(),
                                      [](std::uint8_t c) { return c >= ' ' && c <= '~'; });
        return text ? text_of(tail) : hex_of(tail, " ");
    }
    case Tail::eeprom: {
        const std::string address = std::to_string(parsed.address) + ",";
        if (parsed.operation == 'W') return address + "W," + hex_of(tail);
        return address + std::to_string(parsed.length) + "," + parsed.operation;
    }
    }
    return "";
}

/// The command as a line, in the plainest way.
std::string line_of(const Parsed& parsed, std::span<const std::uint8_t> bytes) {
    const Form& form = *parsed.form;
    std::string line = bytes[0] == lead_in_hash ? "#" : "ESC ";
    line += form.group;
    if (form.op != 0) line += form.op;
    std::string values;
    for (int i = 0; i < param_count(form); ++i)
        values += (i == 0 ? "" : ",") + std::to_string(parsed.params[static_cast<std::size_t>(i)]);
    const std::string tail = tail_text(parsed, bytes.subspan(parsed.tail_at, parsed.tail_size));
    if (!values.empty() && !tail.empty()) values += ",";
    values += tail;
    return values.empty() ? line : line + " " + values;
}

/// Whether the line gives these bytes.
bool gives(const std::string& text, std::span<const std::uint8_t> bytes) {
    const Names no_names;
    const Assembly assembly{&no_names, [](int) { return Bytes(); }};
    const SourceLine line{"", 0, text};
    Bytes made;
    try {
        assemble_line(line, assembly, made);
    } catch (const Fault&) {
        return false;
    }
    return std::equal(made.begin(), made.end(), bytes.begin(), bytes.end());
}

}  // namespace

void assemble_line(const SourceLine& line, const Assembly& assembly, Bytes& bytes,
                   Columns* columns) {
    if (columns != nullptr) columns->at = 0, columns->column = 1;
    Scanner scanner{&line, 0};
    if (peek(scanner) == 0) return;
    if (take_char(scanner, '#'))
        return assemble_command(scanner, lead_in_hash, assembly, bytes, columns);
    const Scanner start = scanner;
    const std::string_view word = take_name(scanner);
    if (word == "ESC" || word == "esc")
        return assemble_command(scanner, lead_in_esc, assembly, bytes, columns);
    if (word != "text" && word != "bytes")
        fail(start, "expected a command behind # or ESC, text, or bytes");
    const Scanner pieces = scanner;
    const Bytes plain = take_bytes(scanner, columns);
    if (plain.empty()) fail(pieces, "expected a text in double quotes or hexadecimal digits");
    append(bytes, plain);
}

std::string command_list() {
    std::string list;
    for (const Form& form : all_forms()) {
        const std::string words = parameters_of(form, raw_names_of(form), ",");
        (list += '#') += form.group;
        if (form.op != 0) list += form.op;
        if (!words.empty()) (list += ' ') += words;
        list += '\n';
    }
    return list;
}

std::vector<std::string> lines_from(std::span<const std::uint8_t> bytes) {
    std::vector<std::string> lines;
    while (!bytes.empty()) {
        const auto is_lead_in = [](std::uint8_t c) {
            return c == lead_in_esc || c == lead_in_hash;
        };
        const auto start = std::find_if(bytes.begin(), bytes.end(), is_lead_in);
        const auto plain = static_cast<std::size_t>(start - bytes.begin());
        append_plain(lines, bytes.first(plain));
        bytes = bytes.subspan(plain);
        if (bytes.empty()) break;
        const std::optional<Parsed> parsed = parse_command(bytes);
        const auto command = bytes.first(parsed ? parsed->size : bytes.size());
        std::string line;
        if (parsed && parsed->form != nullptr) line = line_of(*parsed, command);
        if (!line.empty() && gives(line, command))
            lines.push_back(line);
        else if (command[0] == lead_in_hash)
            append_plain(lines, command);
        else
            for (std::size_t at = 0; at < command.size(); at += bytes_a_line)
                lines.push_back(hex_line(
                    "bytes", command.subspan(at, std::min(bytes_a_line, command.size() - at))));
        bytes = bytes.subspan(command.size());
    }
    return lines;
}

}  // namespace orvanel
