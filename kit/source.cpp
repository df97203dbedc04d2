#include "kit/source.h"

#include "base/bytes.h"
#include "base/files.h"
#include "base/hex.h"
#include "base/quoting.h"
#include "base/utf8.h"
#include "kit/code_page.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <filesystem>

namespace orvanel {

namespace {

constexpr std::size_t max_source_bytes = std::size_t{4} << 20;  // bytes of a file
constexpr std::size_t max_lines = 1 << 18;                      // of all files together
constexpr std::size_t max_include_depth = 16;
constexpr std::string_view blanks = " \t\r";
constexpr char comment = ';';

bool is_name_char(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool begins_character(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

/// Reads files into one list of lines; `open` are the files around the present one.
struct Reader {
    std::vector<SourceLine> lines;
    std::vector<std::string> open;
    Faults* faults;
};

void read_text(Reader& reader, const std::string& name, std::string_view text);

void read_included(Reader& reader, const std::string& path) {
    const std::string key = std::filesystem::path(path).lexically_normal().string();
    if (std::find(reader.open.begin(), reader.open.end(), key) != reader.open.end())
        throw Fault({path, 0, 0}, "includes itself");
    if (reader.open.size() >= max_include_depth)
        throw Fault({path, 0, 0}, "is included too deep, at most " +
                                      std::to_string(max_include_depth) + " files");
    Bytes content;
    const std::string fault = read_file(path, max_source_bytes, content);
    if (!fault.empty()) throw Fault({path, 0, 0}, fault);
    if (std::ranges::find(content, 0) != content.end())
        throw Fault({path, 0, 0}, "has a zero byte in it, and so is no text of a kit");
    reader.open.push_back(key);
    read_text(reader, path, std::string(content.begin(), content.end()));
    reader.open.pop_back();
}

/// True if the line is an include, which then has been carried out.
bool read_include(Reader& reader, const SourceLine& line) {
    Scanner scanner{&line, 0};
    if (take_word(scanner) != "include") return false;
    skip_blanks(scanner);
    const Scanner name = scanner;
    const std::string path = take_path(scanner);
    expect_end(scanner);
    try {
        read_included(reader, path_beside(line.file, path));
    } catch (const Fault& fault) {
        // What is wrong with the file as a whole is reported where its name stands.
        if (fault.place.line > 0) throw;
        fail(name, in_quotes(path) + ": " + fault.what());
    }
    return true;
}

void read_text(Reader& reader, const std::string& name, std::string_view text) {
    text = after_mark(text);
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        SourceLine line{name, number, std::string(text.substr(0, end))};
        text.remove_prefix(std::min(end + 1, text.size()));
        if (reader.lines.size() >= max_lines)
            throw Fault({name, number, 0}, "more than " + std::to_string(max_lines) + " lines");
        try {
            // A blank line stands for an include, so that its file is known by a line of its own.
            if (read_include(reader, line)) line.text.clear();
            reader.lines.push_back(std::move(line));
        } catch (const Fault& fault) {
            reader.faults->push_back(fault);
        }
    }
}

/// The scanner stands after a backslash.
void take_escape(Scanner& scanner, Bytes& bytes) {
    const std::string_view text = scanner.line->text;
    const char letter = scanner.at < text.size() ? text[scanner.at] : '\0';
    constexpr std::string_view module_escapes = "|~@";
    if (const int byte = escaped_byte(letter); byte >= 0) {
        bytes.push_back(low8(byte));
    } else if (module_escapes.find(letter) != std::string_view::npos) {
        bytes.push_back('\\');
        bytes.push_back(static_cast<std::uint8_t>(letter));
    } else if (const int pair = letter == 'x' ? hex_pair(text.substr(scanner.at + 1)) : -1;
               pair >= 0) {
        bytes.push_back(low8(pair));
        scanner.at += 2;
    } else {
        --scanner.at;
        fail(scanner, R"(behind \ comes one of \ " n r t e | ~ @ or x and two digits)");
    }
    ++scanner.at;
}

void take_hex(Scanner& scanner, Bytes& bytes, Columns* columns) {
    const Scanner start = scanner;
    const std::string_view digits = take_word(scanner, "\"");
    if (!is_hex(digits) || digits.size() % 2 != 0)
        fail(start, in_quotes(digits) +
                        " is neither pairs of hexadecimal digits nor a text in double quotes");
    append_hex_pairs(digits, bytes);
    if (columns == nullptr) return;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        note_column(*columns, {start.line, start.at + i}, columns->list.size() + 1);
}

/// The number at the start of `text`, which is shortened; -1 if there is none. Stops counting at a
/// million, which is beyond every range here.
int take_value(std::string_view& text) {
    int base = 10;
    if (text.starts_with("$")) {
        base = 16;
        text.remove_prefix(1);
    } else if (text.starts_with("0x") || text.starts_with("0X")) {
        base = 16;
        text.remove_prefix(2);
    }
    int value = -1;
    for (; !text.empty(); text.remove_prefix(1)) {
        const int digit = hex_digit(text.front());
        if (digit < 0 || digit >= base) break;
        value = std::min(std::max(value, 0) * base + digit, 1'000'000);
    }
    return value;
}

std::string range_of(int min, int max) {
    return std::to_string(min) + " to " + std::to_string(max);
}

}  // namespace

std::vector<SourceLine> read_source(const std::string& path, Faults& faults) {
    Reader reader{{}, {}, &faults};
    try {
        read_included(reader, path);
    } catch (const Fault& fault) {
        if (fault.place.line == 0) throw;
        faults.push_back(fault);
    }
    return std::move(reader.lines);
}

std::vector<SourceLine> lines_of(const std::string& name, std::string_view text, Faults& faults) {
    Reader reader{{}, {name}, &faults};
    try {
        read_text(reader, name, text);
    } catch (const Fault& fault) {
        faults.push_back(fault);
    }
    return std::move(reader.lines);
}

std::string path_beside(const std::string& file, std::string_view path) {
    return (std::filesystem::path(file).parent_path() / path).string();
}

Place place_of(const Scanner& scanner) {
    const std::string_view before = std::string_view(scanner.line->text)
                                        .substr(0, std::min(scanner.at, scanner.line->text.size()));
    const auto characters = std::count_if(before.begin(), before.end(), begins_character);
    return {scanner.line->file, scanner.line->number, static_cast<int>(characters) + 1};
}

void note_column(Columns& columns, const Scanner& scanner, std::size_t size) {
    if (scanner.at < columns.at) columns.at = 0, columns.column = 1;
    const std::string_view text = scanner.line->text;
    const std::size_t end = std::min(scanner.at, text.size());
    for (; columns.at < end; ++columns.at)
        if (begins_character(text[columns.at])) ++columns.column;
    columns.list.resize(std::max(size, columns.list.size()), columns.column);
}

void fail(const Scanner& scanner, const std::string& what) { throw Fault(place_of(scanner), what); }

void skip_blanks(Scanner& scanner) {
    scanner.at = std::min(scanner.line->text.find_first_not_of(blanks, scanner.at),
                          scanner.line->text.size());
}

char peek(Scanner& scanner) {
    skip_blanks(scanner);
    if (scanner.at >= scanner.line->text.size()) return 0;
    const char c = scanner.line->text[scanner.at];
    return c == comment ? '\0' : c;
}

bool take_char(Scanner& scanner, char c) {
    if (peek(scanner) != c) return false;
    ++scanner.at;
    return true;
}

void expect_char(Scanner& scanner, char c) {
    if (!take_char(scanner, c)) fail(scanner, std::string("expected ") + c);
}

void expect_end(Scanner& scanner) {
    if (peek(scanner) != 0) fail(scanner, "expected the end of the line");
}

std::string_view take_name(Scanner& scanner) {
    const char first = peek(scanner);
    if (!is_name_char(first) || (first >= '0' && first <= '9')) return {};
    const std::string_view rest = std::string_view(scanner.line->text).substr(scanner.at);
    const auto end = std::find_if_not(rest.begin(), rest.end(), is_name_char);
    const auto length = static_cast<std::size_t>(end - rest.begin());
    scanner.at += length;
    return rest.substr(0, length);
}

std::string_view take_word(Scanner& scanner, std::string_view ends) {
    if (peek(scanner) == 0) return {};
    const std::string_view rest = std::string_view(scanner.line->text).substr(scanner.at);
    const auto is_end = [ends](char c) {
        return c == comment || blanks.find(c) != std::string_view::npos ||
               ends.find(c) != std::string_view::npos;
    };
    const auto end = std::find_if(rest.begin(), rest.end(), is_end);
    const auto length = static_cast<std::size_t>(end - rest.begin());
    scanner.at += length;
    return rest.substr(0, length);
}

std::string take_path(Scanner& scanner) {
    const Scanner start = scanner;
    std::string path;
    if (take_char(scanner, '"')) {
        const std::size_t end = scanner.line->text.find('"', scanner.at);
        if (end == std::string::npos) fail(scanner, "expected a closing quote");
        path = scanner.line->text.substr(scanner.at, end - scanner.at);
        scanner.at = end + 1;
    } else {
        path = take_word(scanner);
    }
    // A zero ends a name for the system.
    if (path.empty() || path.find('\0') != std::string::npos) fail(start, "expected a file name");
    return path;
}

int take_number(Scanner& scanner, int min, int max) {
    skip_blanks(scanner);
    const Scanner start = scanner;
    std::string_view rest = std::string_view(scanner.line->text).substr(scanner.at);
    const std::size_t before = rest.size();
    const int value = take_value(rest);
    if (value < 0) fail(start, "expected a number, " + range_of(min, max));
    scanner.at += before - rest.size();
    if (value < min || value > max) fail(start, "the number is outside " + range_of(min, max));
    return value;
}

bool number_of(std::string_view text, int min, int max, int& value) {
    value = take_value(text);
    return text.empty() && value >= min && value <= max;
}

Bytes take_text(Scanner& scanner, Columns* columns) {
    skip_blanks(scanner);
    const Scanner start = scanner;
    if (!take_char(scanner, '"')) fail(start, "expected a text in double quotes");
    const std::string& text = scanner.line->text;
    Bytes bytes;
    const std::size_t first = columns == nullptr ? 0 : columns->list.size();
    Scanner character_at = scanner;
    while (scanner.at < text.size()) {
        if (columns != nullptr) note_column(*columns, character_at, first + bytes.size());
        character_at = scanner;
        if (text[scanner.at] == '"') {
            ++scanner.at;
            return bytes;
        }
        if (text[scanner.at] == '\\') {
            ++scanner.at;
            take_escape(scanner, bytes);
            continue;
        }
        std::string_view rest = std::string_view(text).substr(scanner.at);
        const std::size_t before = rest.size();
        const int character = take_character(rest);
        if (character < 0) fail(scanner, "the text is no UTF-8 here");
        const int code = code_of(character);
        if (code < 0)
            fail(scanner, "the module's code page has no '" +
                              text.substr(scanner.at, before - rest.size()) + "'");
        bytes.push_back(low8(code));
        scanner.at += before - rest.size();
    }
    fail(start, "the text lacks its closing quote");
}

Bytes take_bytes(Scanner& scanner, Columns* columns) {
    Bytes bytes;
    while (const char c = peek(scanner)) {
        if (c == '"') {
            const Bytes text = take_text(scanner, columns);
            bytes.insert(bytes.end(), text.begin(), text.end());
        } else {
            take_hex(scanner, bytes, columns);
        }
    }
    return bytes;
}

}  // namespace orvanel
