#include "kit/sections.h"

#include "base/nearest.h"
#include "base/quoting.h"
#include "base/words.h"

#include <algorithm>

namespace orvanel {

namespace {

constexpr std::string_view topics =
    "image, constants, font, picture, power-on macro, normal macro, touch macro, menu macro, "
    "bytes or stream";

/// The one of the list, `a, b macro or c`, that the word was meant for; else the list.
std::string expected(std::string_view word, std::string_view list) {
    std::vector<std::string_view> names;
    for (std::string_view rest = list; !rest.empty();) {
        const std::size_t end = std::min(rest.find_first_of(", "), rest.size());
        const std::string_view name = rest.substr(0, end);
        if (name != "or" && name != "macro") names.push_back(name);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    const std::string guess = is_it(word, names);
    return guess.empty() ? "; expected " + std::string(list) : guess;
}

Kind kind_of(std::string_view word) {
    for (const Kind kind :
         {Kind::font, Kind::picture, Kind::power_on, Kind::normal, Kind::touch, Kind::menu}) {
        const std::string_view name = kind_name(kind);
        if (name.substr(0, name.find(' ')) == word) return kind;
    }
    return Kind::number;
}

bool at_number(Scanner& scanner) {
    const char c = peek(scanner);
    return c == '$' || (c >= '0' && c <= '9');
}

/// Behind the kind: a number, a name, both or neither.
void take_title(Scanner& scanner, Section& section) {
    if (at_number(scanner))
        section.number =
            take_number(scanner, table_of(section.kind).min, table_of(section.kind).max);
    section.name = take_name(scanner);
}

Topic take_stream_topic(Scanner& scanner) {
    if (peek(scanner) == ']') return Topic::stream;
    const Scanner start = scanner;
    const std::string_view word = take_word(scanner, "]");
    if (word == "before") return Topic::stream_before;
    if (word == "after-block") return Topic::stream_after_block;
    if (word == "behind") return Topic::stream_after;
    fail(start, "expected before, after-block or behind");
}

/// The scanner stands after the opening bracket.
Section take_heading(Scanner& scanner) {
    Section section{Topic::item, Kind::number, -1, {}, {}, {}};
    peek(scanner);
    section.place = place_of(scanner);
    const Scanner start = scanner;
    const std::string_view word = take_word(scanner, "]");
    if (word == "image") {
        section.topic = Topic::image;
    } else if (word == "constants") {
        section.topic = Topic::constants;
    } else if (word == "stream") {
        section.topic = take_stream_topic(scanner);
    } else if (word == "bytes") {
        section.topic = Topic::bytes;
        section.number = take_number(scanner, 0, 0xFFFF);
    } else {
        section.kind = kind_of(word);
        if (section.kind == Kind::number)
            fail(start, in_quotes(word) + " is no heading" + expected(word, topics));
        if (is_macro(section.kind) && take_name(scanner) != "macro")
            fail(scanner, "expected the word macro");
        take_title(scanner, section);
    }
    if (!take_char(scanner, ']'))
        fail(scanner,
             section.topic == Topic::item ? "expected a number, a name or ]" : "expected ]");
    expect_end(scanner);
    return section;
}

/// False, with a fault, if the heading can't be read.
bool add_heading(Scanner& scanner, std::vector<Section>& sections, Faults& faults) {
    try {
        sections.push_back(take_heading(scanner));
        return true;
    } catch (const Fault& fault) {
        faults.push_back(fault);
        return false;
    }
}

/// A line in front of the first heading: the version of the language, or nothing.
void take_opening(Scanner& scanner) {
    if (peek(scanner) == 0) return;
    const Scanner start = scanner;
    if (take_name(scanner) != "kit") fail(start, "expected a heading in brackets");
    peek(scanner);
    const Scanner version = scanner;
    if (take_number(scanner, 0, 1'000'000) != 1) fail(version, "this program reads kit 1");
    expect_end(scanner);
}

void read_opening(const SourceLine& line, Faults& faults) {
    Scanner scanner{&line, 0};
    try {
        take_opening(scanner);
    } catch (const Fault& fault) {
        faults.push_back(fault);
    }
}

}  // namespace

std::vector<Section> sections_of(const std::vector<SourceLine>& lines, Faults& faults) {
    std::vector<Section> sections;
    bool opening = true, readable = false;
    for (const SourceLine& line : lines) {
        Scanner scanner{&line, 0};
        if (take_char(scanner, '[')) {
            opening = false;
            readable = add_heading(scanner, sections, faults);
        } else if (opening) {
            read_opening(line, faults);
        } else if (readable) {
            sections.back().lines.push_back(line);
        }
    }
    return sections;
}

std::string_view allowed_by(const SourceLine& line) {
    std::string_view text = trimmed(line.text);
    if (text.ends_with('\r')) text.remove_suffix(1);
    if (!text.starts_with(';')) return {};
    text.remove_prefix(1);
    const std::string_view word = take_word(text);
    const std::string_view name = take_word(text);
    return word == "allow" && trimmed(text).empty() ? name : std::string_view();
}

bool is_setting(const SourceLine& line) {
    Scanner scanner{&line, 0};
    const std::string_view name = take_name(scanner);
    // `ESC =` is a command.
    return !name.empty() && name != "ESC" && name != "esc" && peek(scanner) == '=';
}

Setting setting_of(const SourceLine& line) {
    Scanner scanner{&line, 0};
    peek(scanner);
    Setting setting{{}, scanner, {}};
    setting.key = take_name(scanner);
    if (setting.key.empty() || !take_char(scanner, '='))
        fail(setting.key_place, "expected KEY = VALUE");
    peek(scanner);
    setting.value = scanner;
    return setting;
}

void for_settings(const std::vector<SourceLine>& lines, Faults& faults,
                  const std::function<void(Setting& setting)>& take) {
    std::vector<std::string_view> seen;
    for (const SourceLine& line : lines) {
        Scanner blank{&line, 0};
        if (peek(blank) == 0) continue;
        try {
            Setting setting = setting_of(line);
            if (std::find(seen.begin(), seen.end(), setting.key) != seen.end())
                fail(setting.key_place, in_quotes(setting.key) + " is set twice");
            seen.push_back(setting.key);
            take(setting);
            expect_end(setting.value);
        } catch (const Fault& fault) {
            faults.push_back(fault);
        }
    }
}

void fail_key(const Setting& setting, std::string_view keys) {
    fail(setting.key_place,
         in_quotes(setting.key) + " is no setting here" + expected(setting.key, keys));
}

bool take_yes(Scanner& scanner) {
    peek(scanner);
    const Scanner start = scanner;
    const std::string_view word = take_name(scanner);
    if (word != "yes" && word != "no") fail(start, "expected yes or no");
    return word == "yes";
}

}  // namespace orvanel
