#include "host/trace/hints.h"

#include "base/quoting.h"
#include "firmware/core/ground/draw_area.h"
#include "firmware/raster/refresh.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/menu_definitions.h"
#include "host/trace/byte_hints.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>

namespace orvanel {

namespace {

constexpr std::uint8_t lead_in_hash = '#';

void hint(Step& step, FindingKind kind, std::string words) {
    step.findings.push_back({kind, std::move(words)});
}

bool is_digit(std::uint8_t byte) { return byte >= '0' && byte <= '9'; }
bool is_lower(std::uint8_t byte) { return byte >= 'a' && byte <= 'z'; }
bool is_upper(std::uint8_t byte) { return byte >= 'A' && byte <= 'Z'; }
bool is_blank(std::uint8_t byte) {
    return byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n';
}

std::string text_of(std::span<const std::uint8_t> bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes)
        text += byte == 0x1B ? "ESC" : std::string(1, static_cast<char>(byte));
    return text;
}

std::string in_double_quotes(std::string_view text) { return '"' + printable(text) + '"'; }

// --- numbers

/// What a separator never is: with one of these in its place it was forgotten.
bool ends_oddly(std::uint8_t byte) {
    return byte == '#' || byte == 0x1B || byte == '$' || byte == '.' || byte == '-' ||
           byte == '"' || is_lower(byte) || is_upper(byte);
}

/// A number as it stands in the step: what was skipped, its digits, and the byte that ended it.
struct Written {
    std::span<const std::uint8_t> skipped, digits;
    std::uint8_t end;
};

Written written(const Step& step, const StepNumber& number) {
    const auto bytes = std::span(step.bytes).subspan(number.begin, number.end - number.begin);
    const auto first = std::find_if(bytes.begin(), bytes.end(),
                                    [](std::uint8_t b) { return is_digit(b) || b == '$'; });
    const auto skipped = static_cast<std::size_t>(first - bytes.begin());
    if (skipped + 1 >= bytes.size()) return {};
    return {bytes.first(skipped), bytes.subspan(skipped, bytes.size() - skipped - 1), bytes.back()};
}

/// The command up to the number's digits, and the separator that it lacks.
std::string mended(const Step& step, const StepNumber& number) {
    return printable(text_of(std::span(step.bytes).first(number.end - 1)) + ',');
}

std::string took_words(const Step& step, const StepNumber& number, const Written& w) {
    const std::string end = printable(text_of({&w.end, 1}));
    const std::string took = "the number took '" + end + "' along: ";
    if (w.end == '.') return took + "numbers have no decimals, 0 to 255";
    if ((w.end == 'x' || w.end == 'X') && text_of(w.digits) == "0")
        return took + "hexadecimal digits come after $";
    return took + "write " + mended(step, number);
}

std::string skipped_words(const Written& w) {
    const auto first = std::find_if_not(w.skipped.begin(), w.skipped.end(), is_blank);
    const std::string what = printable(text_of({first, w.skipped.end()}));
    const bool command = std::any_of(w.skipped.begin(), w.skipped.end(),
                                     [](std::uint8_t b) { return b == '#' || b == 0x1B; });
    if (command)
        return "'" + what + "' was skipped in search of a number: one is missing before it";
    const bool empty = std::all_of(w.skipped.begin(), w.skipped.end(), [](std::uint8_t b) {
        return b == ',' || b == ';' || is_blank(b);
    });
    if (empty) return "'" + what + "' was skipped: nothing between two separators is no 0, write 0";
    return "'" + what + "' was skipped in search of a number";
}

bool is_harmless(std::uint8_t byte) { return is_blank(byte) || byte == '-'; }  // '-' is a remark

void add_number_hints(Step& step) {
    if (step.bytes.empty() || step.bytes.front() != lead_in_hash) return;
    for (const StepNumber& number : step.numbers) {
        if (number.end > step.bytes.size()) return;
        const Written w = written(step, number);
        if (w.digits.empty()) continue;
        // What is odd after the first one follows from it.
        if (!std::all_of(w.skipped.begin(), w.skipped.end(), is_harmless))
            return hint(step, FindingKind::number_skipped, skipped_words(w));
        if (ends_oddly(w.end))
            return hint(step, FindingKind::number_took, took_words(step, number, w));
    }
}

// --- labels

/// Words that stand on keys and begin with a letter that a label takes for something else.
constexpr std::array<std::string_view, 60> key_words{
    "CAL",      "CALIBRATE", "CALL",     "CANCEL",  "CHANGE", "CHANNEL", "CHARGE", "CHECK",
    "CLEAR",    "CLOCK",     "CLOSE",    "CODE",    "COLD",   "COLOR",   "COLOUR", "CONFIG",
    "CONFIRM",  "CONTINUE",  "CONTRAST", "CONTROL", "COOL",   "COOLER",  "COPY",   "COUNT",
    "LANGUAGE", "LED",       "LEFT",     "LEVEL",   "LIGHT",  "LIMIT",   "LINE",   "LIST",
    "LOAD",     "LOCK",      "LOG",      "LOGIN",   "LOGOUT", "LOW",     "LOWER",  "OFF",
    "OK",       "ON",        "OPEN",     "OPTIONS", "OTHER",  "OVEN",    "RADIO",  "RAISE",
    "RATE",     "READ",      "READY",    "RECORD",  "RED",    "RELAY",   "RESET",  "RESTART",
    "RETURN",   "RIGHT",     "RUN",      "UP"};

/// Whether the letter that was taken away belonged to a word.
bool belongs_to_word(std::string_view label) {
    if (label.size() < 2) return false;
    if (is_lower(static_cast<std::uint8_t>(label[1]))) return true;
    const auto end = std::find_if(label.begin(), label.end(),
                                  [](char c) { return !is_upper(static_cast<std::uint8_t>(c)); });
    const std::string_view word(label.begin(), end);
    return std::find(key_words.begin(), key_words.end(), word) != key_words.end();
}

/// A label from the first character that is drawn or aligns to the end of its first line.
std::string_view first_line(std::string_view text) {
    const auto begin = text.find_first_not_of("|~@\\");
    if (begin == std::string_view::npos) return {};
    text.remove_prefix(begin);
    return text.substr(0, text.find('|'));
}

bool aligns(char c) { return c == 'L' || c == 'C' || c == 'R'; }

void add_alignment_hint(Step& step, std::string_view label, const std::string& before) {
    const std::string_view line = first_line(label);
    if (line.empty() || !aligns(line.front()) || !belongs_to_word(line)) return;
    hint(step, FindingKind::label_alignment,
         "the label's first letter became its alignment, " + in_double_quotes(line.substr(1)) +
             " shows: write " + in_double_quotes(before + 'C' + std::string(line)));
}

std::string_view raw_text(const Step& step) {
    const std::size_t begin = std::min(step.raw_start, step.bytes.size());
    auto text = std::span(step.bytes).subspan(begin);
    if (!text.empty() && (text.back() == 0 || text.back() == '\n' || text.back() == '\r'))
        text = text.first(text.size() - 1);
    return {reinterpret_cast<const char*>(text.data()), text.size()};
}

void add_opener_text_hints(Step& step) {
    const std::string_view text = raw_text(step);
    if (text.empty()) return;
    const char first = text.front();
    const bool directs = first == 'U' || first == 'O' || first == 'L' || first == 'R';
    const std::string_view line = text.substr(0, text.find('|'));
    if (!directs) return add_alignment_hint(step, line, "U");
    if (!belongs_to_word(line))
        return add_alignment_hint(step, line.substr(1), std::string(1, first));
    hint(step, FindingKind::opener_direction,
         "the text's first letter became the direction of the list, " +
             in_double_quotes(line.substr(1)) + " is left: write " +
             in_double_quotes("UC" + std::string(line)));
}

// --- places on the glass

std::string rectangle_words(int x1, int y1, int x2, int y2) {
    return std::to_string(x1) + ',' + std::to_string(y1) + ".." + std::to_string(x2) + ',' +
           std::to_string(y2);
}

std::string size_words(int width, int height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

bool on_glass(const Block& b) { return b.x1 >= 0 && b.y1 >= 0 && b.x2 <= last_x && b.y2 <= last_y; }

bool off_glass(const Block& b) { return b.x2 < 0 || b.y2 < 0 || b.x1 > last_x || b.y1 > last_y; }

void add_text_block_hints(Step& step) {
    for (const Block& b : step.blocks) {
        const std::string where = "the text covers " + rectangle_words(b.x1, b.y1, b.x2, b.y2);
        if (off_glass(b)) return hint(step, FindingKind::text_off_glass, where + ", off the glass");
        if (!on_glass(b))
            return hint(step, FindingKind::text_off_glass,
                        where + " and is cut: the glass ends at " + std::to_string(last_x) + ',' +
                            std::to_string(last_y));
    }
    if (step.moved > 0)
        hint(step, FindingKind::text_moved,
             "the text has too little room before its point and was moved by " +
                 std::to_string(step.moved) + (step.moved == 1 ? " dot" : " dots"));
}

// --- touch areas

std::string kind_words(AreaType type) {
    constexpr std::array<const char*, 8> kinds{"area",      "key",         "switch", "bar",
                                               "draw area", "menu opener", "list",   "report area"};
    return kinds[static_cast<std::size_t>(type)];
}

std::string area_words(const TouchArea& area) {
    std::string words = kind_words(area.type);
    const std::uint8_t code = area.down_code != 0 ? area.down_code : area.up_code;
    if (code != 0) words += ' ' + std::to_string(code);
    return words + " at " + rectangle_words(area.x1, area.y1, area.x2, area.y2);
}

bool is_pressed(AreaType type) {
    return type == AreaType::key || type == AreaType::toggle || type == AreaType::opener ||
           type == AreaType::bar;
}

bool overlap(const TouchArea& a, const TouchArea& b) {
    return a.x1 < b.x2 && b.x1 < a.x2 && a.y1 < b.y2 && b.y1 < a.y2;
}

bool share_code(const TouchArea& a, const TouchArea& b) {
    const auto has = [&](std::uint8_t code) {
        return code != 0 && (code == b.down_code || code == b.up_code);
    };
    return has(a.down_code) || has(a.up_code);
}

bool has_key_code(AreaType type) { return type == AreaType::key || type == AreaType::toggle; }

/// The areas before the new one, in the order of the table.
std::span<const TouchArea> areas_before() {
    return std::span(touch_areas).first(static_cast<std::size_t>(area_count - 1));
}

void add_neighbour_hints(Step& step, const TouchArea& area) {
    for (const TouchArea& other : areas_before()) {
        const bool overlaps =
            is_pressed(area.type) && is_pressed(other.type) && overlap(area, other);
        if (overlaps) {
            const bool same = rectangle_of(area) == rectangle_of(other);
            return hint(step, FindingKind::areas_overlap,
                        (same ? "there is already a " : "it overlaps the ") + area_words(other) +
                            ": remove what is old with #AL0,0, or #AV");
        }
        if (has_key_code(area.type) && has_key_code(other.type) && share_code(area, other))
            return hint(step, FindingKind::same_code,
                        "the " + area_words(other) + " has the same code");
    }
}

void add_label_hint(Step& step, const TouchArea& area) {
    if (step.blocks.empty()) return;
    const Block& b = step.blocks.back();
    if (b.x1 >= area.x1 && b.y1 >= area.y1 && b.x2 <= area.x2 && b.y2 <= area.y2 && step.moved == 0)
        return;
    hint(step, FindingKind::label_outside,
         "the label has " + size_words(b.x2 - b.x1 + 1, b.y2 - b.y1 + 1) + " dots, the " +
             kind_words(area.type) + ' ' +
             size_words(area.x2 - area.x1 + 1, area.y2 - area.y1 + 1));
}

void add_code_hint(Step& step, const TouchArea& area) {
    if (has_key_code(area.type) && area.down_code == 0 && area.up_code == 0)
        hint(step, FindingKind::no_code,
             "both codes are 0: the " + kind_words(area.type) +
                 " starts no macro and sends nothing");
    if (area.type == AreaType::opener && area.state != no_menu_slot &&
        menu_defs[area.state].list_code == 0)
        hint(step, FindingKind::no_code, "the list's code is 0: a choice from it tells nobody");
}

bool defines_area(const Step& step) {
    return step.group == 'A' && step.op != 0 &&
           std::string_view("BDHJKMTU").find(static_cast<char>(step.op)) != std::string_view::npos;
}

void add_area_hints(Step& step) {
    if (area_count == 0) return;
    const TouchArea& area = touch_area(area_count - 1);
    if (area.x2 - area.x1 < 2 || area.y2 - area.y1 < 2) {
        hint(step, FindingKind::area_too_small,
             "an area of " + size_words(area.x2 - area.x1 + 1, area.y2 - area.y1 + 1) +
                 " dots has none inside its edges, where a finger hits it");
        return;
    }
    if (step.op == 'M')
        add_opener_text_hints(step);
    else if (has_key_code(area.type))
        add_alignment_hint(step, raw_text(step), "");
    add_label_hint(step, area);
    add_code_hint(step, area);
    add_neighbour_hints(step, area);
}

int distance_to(const TouchArea& area, int x, int y) {
    const int dx = std::max({area.x1 - x, x - area.x2, 0});
    const int dy = std::max({area.y1 - y, y - area.y2, 0});
    return dx * dx + dy * dy;
}

/// Null without an area.
const TouchArea* nearest_area(int x, int y) {
    const auto live = std::span(touch_areas).first(area_count);
    const auto nearest =
        std::min_element(live.begin(), live.end(), [=](const auto& a, const auto& b) {
            return distance_to(a, x, y) < distance_to(b, x, y);
        });
    return nearest == live.end() ? nullptr : &*nearest;
}

bool adds_no_area(const Step& step) {
    return std::any_of(step.findings.begin(), step.findings.end(), [](const Finding& f) {
        return f.kind == kind_of(Remark::menus_full) || f.kind == kind_of(Remark::missing_bar);
    });
}

}  // namespace

void add_command_hints(Step& step) {
    add_number_hints(step);
    add_byte_hints(step);
    if (loses_step(step)) return;  // what else is odd follows from it
    if (step.group == 'Z' || step.group == 'N')
        add_text_block_hints(step);
    else if (defines_area(step) && !adds_no_area(step))
        add_area_hints(step);
    else if (step.group == 'X' && step.by_touch)
        hint(step, FindingKind::wait_in_touch,
             "a touch waits for this: the glass takes no other for the time of the wait");
}

void add_text_hints(Step& step) {
    if (!step.is_lost) {
        if (terminal_on) add_byte_hints(step);
        return;
    }
    hint(step, FindingKind::text_unseen,
         "text for the terminal, which is off: nobody sees it (#TE turns it on, and ; begins a "
         "comment)");
}

std::vector<Finding> findings_on_press(int x, int y) {
    if (area_in_hand != 0) return {};
    std::string words = "press at " + std::to_string(x) + ',' + std::to_string(y) + " on nothing";
    if (const TouchArea* nearest = nearest_area(x, y))
        words += "; nearest: " + area_words(*nearest);
    else
        words += ": there is no touch area";
    return {{FindingKind::press_on_nothing, std::move(words)}};
}

bool loses_step(const Step& step) {
    return std::any_of(step.findings.begin(), step.findings.end(), [](const Finding& f) {
        return f.kind == FindingKind::number_took || f.kind == FindingKind::number_skipped ||
               f.kind == FindingKind::digits || f.kind == FindingKind::text_took ||
               f.kind == kind_of(Remark::undefined_op) ||
               f.kind == kind_of(Remark::undefined_group);
    });
}

}  // namespace orvanel
