#include "host/program/ini_file.h"

#include "base/files.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

namespace orvanel {

namespace {

constexpr std::string_view blanks = " \t\r";
constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";  // some editors begin a text with it
constexpr auto npos = std::string_view::npos;

/// A part of the text, by position.
struct Part {
    std::size_t begin, end;
};

struct Line {
    Part text;         // without its end
    std::size_t next;  // where the next line begins
};

Line line_at(std::string_view text, std::size_t begin) {
    const std::size_t feed = text.find('\n', begin);
    if (feed == npos) return {{begin, text.size()}, text.size()};
    const bool has_return = feed > begin && text[feed - 1] == '\r';
    return {{begin, has_return ? feed - 1 : feed}, feed + 1};
}

std::string_view of(std::string_view text, Part part) {
    return text.substr(part.begin, part.end - part.begin);
}

Part trimmed_part(std::string_view text, Part part) {
    while (part.begin < part.end && blanks.find(text[part.begin]) != npos)
        ++part.begin;
    while (part.begin < part.end && blanks.find(text[part.end - 1]) != npos)
        --part.end;
    return part;
}

bool is_comment(std::string_view line) { return line.starts_with(';') || line.starts_with('#'); }

/// The name between the brackets, none if the line (trimmed) isn't the head of a section.
std::optional<std::string_view> section_name(std::string_view line) {
    const std::size_t end = line.find(']');
    if (!line.starts_with('[') || end == npos) return std::nullopt;
    return of(line, trimmed_part(line, {1, end}));
}

/// Where the text begins after its byte order mark.
std::size_t start_of(std::string_view text) {
    return text.starts_with(byte_order_mark) ? byte_order_mark.size() : 0;
}

/// The line that begins at `at`, as the head of a section.
std::optional<std::string_view> section_at(std::string_view text, std::size_t at) {
    return section_name(of(text, trimmed_part(text, line_at(text, at).text)));
}

/// Where the first head of a section at or after `at`, the beginning of a line, begins; else the
/// text's end.
std::size_t next_head(std::string_view text, std::size_t at) {
    while (at < text.size() && !section_at(text, at).has_value())
        at = line_at(text, at).next;
    return at;
}

/// The lines of the first such section, without its head.
std::optional<Part> find_section(std::string_view text, std::string_view section) {
    for (std::size_t at = next_head(text, start_of(text)); at < text.size();) {
        const std::size_t start = line_at(text, at).next;
        const std::size_t end = next_head(text, start);
        if (same_name(*section_at(text, at), section)) return Part{start, end};
        at = end;
    }
    return std::nullopt;
}

/// Where the `=` of the line stands, npos if it is no line of a key.
std::size_t equals_sign(std::string_view text, Part line) {
    if (is_comment(of(text, line))) return npos;
    const std::size_t at = of(text, line).find('=');
    return at == npos ? npos : line.begin + at;
}

struct Value {
    Part written;  // with its quotes
    Part meant;    // without
};

/// The value in quotes, if nothing but a comment follows the closing one.
std::optional<Value> quoted_value(std::string_view text, Part rest) {
    if (rest.begin == rest.end) return std::nullopt;
    const char quote = text[rest.begin];
    if (quote != '"' && quote != '\'') return std::nullopt;
    for (std::size_t end = text.find(quote, rest.begin + 1); end < rest.end;
         end = text.find(quote, end + 1)) {
        const Part after = trimmed_part(text, {end + 1, rest.end});
        const bool comment = after.begin > end + 1 && text[after.begin] == ';';
        if (comment || after.begin == after.end)
            return Value{{rest.begin, end + 1}, {rest.begin + 1, end}};
    }
    return std::nullopt;
}

/// The value after the `=`, up to a blank and a semicolon, which begin a comment.
Value value_behind(std::string_view text, Part rest) {
    const std::size_t before = rest.begin;
    rest = trimmed_part(text, rest);
    if (const auto quoted = quoted_value(text, rest)) return *quoted;
    const bool only_comment = rest.begin < rest.end && text[rest.begin] == ';';
    if (only_comment && rest.begin > before) return {{before, before}, {before, before}};
    for (std::size_t at = rest.begin + 1; at < rest.end; ++at)
        if (text[at] == ';' && blanks.find(text[at - 1]) != npos)
            rest = trimmed_part(text, {rest.begin, at});
    return {rest, rest};
}

std::optional<Value> find_value(std::string_view text, Part section, std::string_view key) {
    for (std::size_t at = section.begin; at < section.end;) {
        const Line line = line_at(text, at);
        const Part content = trimmed_part(text, line.text);
        const std::size_t sign = equals_sign(text, content);
        if (sign != npos && same_name(of(text, trimmed_part(text, {content.begin, sign})), key))
            return value_behind(text, {sign + 1, content.end});
        at = line.next;
    }
    return std::nullopt;
}

/// These lines but those of the key.
std::string without_key(std::string_view lines, std::string_view key) {
    std::string left;
    for (std::size_t at = 0; at < lines.size();) {
        const Part line{at, line_at(lines, at).next};
        if (!find_value(lines, line, key).has_value()) left.append(of(lines, line));
        at = line.end;
    }
    return left;
}

/// The end of the section's last key, or of its head.
std::size_t end_of_keys(std::string_view text, Part section) {
    std::size_t end = section.begin;
    for (std::size_t at = section.begin; at < section.end;) {
        const Line line = line_at(text, at);
        at = line.next;
        if (equals_sign(text, trimmed_part(text, line.text)) != npos) end = at;
    }
    return end;
}

/// Puts a line in at `at`, where one ends. Lines end as the first of the text does, and a text
/// whose last line has no end keeps it so.
void insert_line(std::string& text, std::size_t at, std::string line) {
    const std::size_t feed = text.find('\n');
    const std::string_view end = feed != npos && feed > 0 && text[feed - 1] == '\r' ? "\r\n" : "\n";
    const bool open_end = at > 0 && text[at - 1] != '\n';
    text.insert(at, open_end ? std::string(end) + line : line.append(end));
}

}  // namespace

std::optional<std::string_view> ini_value(std::string_view text, std::string_view section,
                                          std::string_view key) {
    const auto lines = find_section(text, section);
    if (!lines.has_value()) return std::nullopt;
    const auto value = find_value(text, *lines, key);
    if (!value.has_value()) return std::nullopt;
    return of(text, value->meant);
}

bool has_ini_section(std::string_view text, std::string_view section) {
    return find_section(text, section).has_value();
}

std::vector<IniLine> ini_lines(std::string_view text) {
    std::vector<IniLine> lines;
    std::optional<std::string_view> section;
    int number = 0;
    for (std::size_t at = start_of(text); at < text.size();) {
        const Line line = line_at(text, at);
        const Part content = trimmed_part(text, line.text);
        const std::optional<std::string_view> head = section_at(text, at);
        at = line.next;
        ++number;
        if (content.begin == content.end || is_comment(of(text, content))) continue;
        if (head.has_value()) section = head;
        const std::size_t sign = equals_sign(text, content);
        const bool has_key = !head.has_value() && sign != npos;
        const std::string_view key =
            has_key ? of(text, trimmed_part(text, {content.begin, sign})) : std::string_view();
        lines.push_back({number, section, head.has_value(), key});
    }
    return lines;
}

void set_ini_value(std::string& text, std::string_view section, std::string_view key,
                   std::string_view value) {
    auto lines = find_section(text, section);
    if (!lines.has_value()) {
        insert_line(text, text.size(), '[' + std::string(section) + ']');
        lines = Part{text.size(), text.size()};
    }
    const auto found = find_value(text, *lines, key);
    if (!found.has_value())
        insert_line(text, end_of_keys(text, *lines), std::string(key) + '=' + std::string(value));
    else if (of(text, found->meant) != value)
        text.replace(found->written.begin, found->written.end - found->written.begin, value);
}

void remove_ini_value(std::string& text, std::string_view section, std::string_view key) {
    std::size_t at = next_head(text, start_of(text));
    std::string kept = text.substr(0, at);
    while (at < text.size()) {
        const Part head{at, line_at(text, at).next};
        const Part lines{head.end, next_head(text, head.end)};
        const bool is_it = same_name(*section_at(text, at), section);
        const std::string left =
            is_it ? without_key(of(text, lines), key) : std::string(of(text, lines));
        const bool emptied = left.size() < lines.end - lines.begin &&
                             left.find_first_not_of(" \t\r\n") == std::string::npos;
        if (!emptied) kept.append(of(text, head)).append(left);
        at = lines.end;
    }
    text = std::move(kept);
}

bool same_name(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c + 0; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

std::string load_ini(const std::string& path, std::string& text) {
    text.clear();
    std::error_code ignored;
    const auto kind = std::filesystem::status(path, ignored).type();
    if (kind == std::filesystem::file_type::not_found) return {};
    std::vector<std::uint8_t> content;
    const std::string fault = read_file(path, max_ini_bytes, content);
    if (!fault.empty()) return path + ": " + fault;
    text.assign(content.begin(), content.end());
    return {};
}

}  // namespace orvanel
