#include "host/trace/source_map.h"

#include "base/bytes.h"
#include "base/files.h"
#include "base/hex.h"
#include "base/quoting.h"
#include "base/words.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace orvanel {

namespace {

constexpr std::string_view heading = "orvanel42-map 1";
constexpr int max_line_number = 1'000'000'000;
constexpr std::size_t max_map_bytes = std::size_t{16} << 20;  // of a file
constexpr std::size_t max_files = 10'000;
constexpr std::size_t max_allows = 1000;
constexpr std::uint32_t sum_polynomial = 0xEDB88320;

constexpr std::array<std::string_view, 7> kind_words{"",       "font",  "picture", "power-on",
                                                     "normal", "touch", "menu"};

std::string words(std::initializer_list<int> numbers) {
    std::string text;
    for (const int number : numbers)
        text += ' ' + std::to_string(number);
    return text;
}

// --- reading

/// A line on its way. What is wrong first stays in `fault`.
struct LineReader {
    std::string_view rest;
    std::string fault;
};

int take(LineReader& line, std::int64_t min, std::int64_t max) {
    std::int64_t value = min;
    if (line.fault.empty()) line.fault = take_number(line.rest, min, max, value);
    return static_cast<int>(value);
}

std::uint32_t take_hex(LineReader& line) {
    std::uint32_t value = 0;
    if (line.fault.empty()) line.fault = take_hex_number(line.rest, value);
    return value;
}

int take_file(LineReader& line, const SourceMap& map) {
    if (map.files.empty()) line.fault = "no line 'file' stands before it";
    return take(line, 0, std::ssize(map.files) - 1);
}

int take_line_number(LineReader& line) { return take(line, 1, max_line_number); }

void take_image(LineReader& line, SourceMap& map) {
    if (map.size != 0) line.fault = "there is an image already";
    map.size = take(line, eeprom_small, eeprom_large);
    map.sum = take_hex(line);
}

void take_source(LineReader& line, SourceMap& map) {
    Bytes name;
    line.fault = take_bytes(line.rest, name);
    if (map.files.size() >= max_files) line.fault = "these are too many files";
    map.files.emplace_back(name.begin(), name.end());
}

void take_item(LineReader& line, SourceMap& map) {
    const std::string_view word = take_word(line.rest);
    const auto kind = std::find(kind_words.begin() + 1, kind_words.end(), word);
    if (kind == kind_words.end()) {
        line.fault = in_quotes(word) + " is no kind of item";
        return;
    }
    MappedItem item{Kind(kind - kind_words.begin()), 0, 0, 0, 0, {}};
    item.number = take(line, table_of(item.kind).min, table_of(item.kind).max);
    item.file = take_file(line, map);
    item.line = take_line_number(line);
    item.column = take_line_number(line);
    item.name = take_word(line.rest);
    map.items.push_back(std::move(item));
}

void take_span(LineReader& line, SourceMap& map) {
    SourceSpan span{};
    span.offset = static_cast<int>(std::min<std::uint32_t>(take_hex(line), eeprom_large));
    if (line.fault.empty() && span.offset >= map.size)
        line.fault = "the offset is outside the image";
    if (line.fault.empty() && !map.spans.empty() && span.offset <= map.spans.back().offset)
        line.fault = "the offset isn't above the one before";
    LineReader nobody = line;
    if (take_word(nobody.rest) == "-") {
        span.file = -1;
        line.rest = nobody.rest;
    } else {
        span.file = take_file(line, map);
        span.line = take_line_number(line);
        span.column = take_line_number(line);
        span.step = take(line, 0, 2);
    }
    map.spans.push_back(span);
}

void take_allow(LineReader& line, SourceMap& map) {
    if (map.allowed.size() >= max_allows) line.fault = "these are too many comments";
    MappedAllow allow{std::string(take_word(line.rest)), 0, 0, {}};
    allow.file = take_file(line, map);
    allow.line = take_line_number(line);
    map.allowed.push_back(std::move(allow));
}

void take_range(LineReader& line, SourceMap& map) {
    if (map.allowed.empty()) {
        line.fault = "there is no allow before it";
        return;
    }
    LineRange range{};
    range.file = take_file(line, map);
    range.first = take_line_number(line);
    range.last = take_line_number(line);
    map.allowed.back().lines.push_back(range);
}

std::string take_row(std::string_view row, SourceMap& map) {
    struct Row {
        std::string_view word;
        void (*take)(LineReader&, SourceMap&);
    };
    constexpr std::array<Row, 6> rows{{{"image", take_image},
                                       {"file", take_source},
                                       {"item", take_item},
                                       {"from", take_span},
                                       {"allow", take_allow},
                                       {"lines", take_range}}};
    LineReader line{row, {}};
    const std::string_view word = take_word(line.rest);
    const auto known =
        std::find_if(rows.begin(), rows.end(), [word](const Row& r) { return r.word == word; });
    if (known == rows.end()) return in_quotes(word) + " begins no line of a map";
    known->take(line, map);
    if (line.fault.empty() && !trimmed(line.rest).empty())
        return in_quotes(trimmed(line.rest)) + " is too much";
    return line.fault;
}

std::string_view take_text_line(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

}  // namespace

std::uint32_t image_sum(std::span<const std::uint8_t> image) {
    std::uint32_t sum = 0xFFFFFFFF;
    for (const std::uint8_t byte : image) {
        sum ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum & 1) != 0 ? sum >> 1 ^ sum_polynomial : sum >> 1;
    }
    return ~sum;
}

std::string text_of(const SourceMap& map) {
    std::string text(heading);
    text += "\nimage " + std::to_string(map.size) + ' ' + hex_digits(map.sum, 8) + '\n';
    for (const std::string& file : map.files)
        text += "file " + text_piece(file) + '\n';
    for (const MappedItem& item : map.items) {
        text += "item " + std::string(kind_words[static_cast<std::size_t>(item.kind)]) +
                words({item.number, item.file, item.line, item.column});
        if (!item.name.empty()) text += ' ' + item.name;
        text += '\n';
    }
    for (const MappedAllow& allow : map.allowed) {
        text += "allow " + allow.finding + words({allow.file, allow.line}) + '\n';
        for (const LineRange& range : allow.lines)
            text += "lines" + words({range.file, range.first, range.last}) + '\n';
    }
    for (const SourceSpan& span : map.spans)
        text += "from " + hex_digits(static_cast<std::uint32_t>(span.offset), 4) +
                (span.file < 0 ? " -" : words({span.file, span.line, span.column, span.step})) +
                '\n';
    return text;
}

std::string read_map(std::string_view text, SourceMap& map) {
    map = {};
    if (take_text_line(text) != heading)
        return "is no map of an image: it doesn't begin with " + in_quotes(heading);
    for (int number = 2; !text.empty(); ++number) {
        const std::string_view line = take_text_line(text);
        if (trimmed(line).empty()) continue;
        if (const std::string fault = take_row(line, map); !fault.empty())
            return "line " + std::to_string(number) + ": " + fault;
    }
    return map.size == 0 ? "has no line 'image'" : "";
}

std::string load_map(const std::string& path, std::span<const std::uint8_t> image, SourceMap& map) {
    Bytes content;
    std::string fault = read_file(path, max_map_bytes, content);
    if (fault.empty())
        fault = read_map({reinterpret_cast<const char*>(content.data()), content.size()}, map);
    if (!fault.empty()) return fault;
    const bool fits = map.size <= std::ssize(image) &&
                      image_sum(image.first(static_cast<std::size_t>(map.size))) == map.sum;
    return fits ? "" : "is the map of another image: build image and map in one run";
}

const MappedItem* find_item(const SourceMap& map, Kind kind, int number) {
    const auto item =
        std::find_if(map.items.begin(), map.items.end(), [=](const MappedItem& candidate) {
            return candidate.kind == kind && candidate.number == number;
        });
    return item == map.items.end() ? nullptr : &*item;
}

const SourceSpan* find_span(const SourceMap& map, int offset) {
    const auto after =
        std::upper_bound(map.spans.begin(), map.spans.end(), offset,
                         [](int at, const SourceSpan& span) { return at < span.offset; });
    if (after == map.spans.begin() || offset >= map.size) return nullptr;
    const SourceSpan& span = *std::prev(after);
    return span.file < 0 ? nullptr : &span;
}

int find_allow(const SourceMap& map, std::string_view finding, std::string_view file, int line) {
    const auto covers = [&](const LineRange& range) {
        return range.first <= line && line <= range.last &&
               map.files[static_cast<std::size_t>(range.file)] == file;
    };
    for (std::size_t i = 0; i < map.allowed.size(); ++i)
        if (map.allowed[i].finding == finding && std::ranges::any_of(map.allowed[i].lines, covers))
            return static_cast<int>(i);
    return -1;
}

}  // namespace orvanel
