#include "host/trace/lines.h"

#include "base/hex.h"
#include "base/quoting.h"
#include "host/trace/findings.h"
#include "host/trace/remarks.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace orvanel {

namespace {

constexpr std::size_t max_shown = 64;  // bytes in a line of text

bool is_plain(std::uint8_t byte) { return byte >= 0x20 && byte < 0x7F; }

std::string_view text_of(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// A text in double quotes as a scenario takes it, with letters for the ends of lines alone.
std::string quoted(std::span<const std::uint8_t> bytes) {
    return text_piece(text_of(bytes), "\\\"\n\r");
}

template <typename List, typename Form>
std::string joined(const List& list, const char* between, Form form) {
    std::string text;
    for (const auto& item : list) {
        if (!text.empty()) text += between;
        text += form(item);
    }
    return text;
}

std::span<const std::uint8_t> raw_bytes(const Step& step) {
    const std::span<const std::uint8_t> bytes(step.bytes);
    return bytes.subspan(std::min(step.raw_start, bytes.size()));
}

/// Bytes after the numbers, without the one that ends a text; whether they are one.
bool as_text(std::span<const std::uint8_t>& raw) {
    const bool ends = !raw.empty() && (raw.back() == 0 || raw.back() == '\n' || raw.back() == '\r');
    const auto inside = ends ? raw.first(raw.size() - 1) : raw;
    if (!std::all_of(inside.begin(), inside.end(),
                     [](std::uint8_t b) { return is_plain(b) || b >= 0x80; }))
        return false;
    raw = inside;
    return true;
}

std::string shown_bytes(const Step& step) {
    const auto shown = std::span(step.bytes).first(std::min(step.bytes.size(), max_shown));
    std::string text = hex_of(shown, " ");
    if (step.count > shown.size()) text += " ... (" + std::to_string(step.count) + " bytes)";
    return text;
}

std::string raw_words(const Step& step) {
    auto raw = raw_bytes(step);
    if (raw.empty()) return "";
    const std::size_t all = step.count - step.raw_start;
    if (as_text(raw) && all <= max_shown) return ' ' + quoted(raw);
    return " + " + std::to_string(all) + (all == 1 ? " byte" : " bytes");
}

/// Lead-in and letters, `-` for what no command asked for.
std::string letters_of(const Step& step) {
    if (step.count == 0) return "-";
    std::string text = step.bytes.front() == '#' ? "#" : "ESC";
    for (const std::uint8_t letter : {step.group, step.op})
        if (letter != 0)
            text += ' ' + (is_plain(letter) ? std::string(1, static_cast<char>(letter))
                                            : byte_escape(static_cast<char>(letter)));
    return text;
}

std::string role_of(const Step& step) {
    if (step.is_text) return "text for the terminal";
    return step.role == nullptr ? "undefined" : step.role;
}

std::string json_number(int n) { return n == 0 ? "" : std::to_string(n); }

}  // namespace

std::string json_quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        const auto byte = static_cast<std::uint8_t>(c);
        if (c == '"' || c == '\\')
            (quoted += '\\') += c;
        else if (is_plain(byte))
            quoted += c;
        else
            quoted += "\\u00" + hex_digits(byte, 2);
    }
    return quoted + '"';
}

std::string json_object(const std::string& time,
                        std::initializer_list<std::pair<std::string_view, std::string>> members) {
    std::string object = "{\"time\":" + time;
    for (const auto& [name, value] : members)
        if (!value.empty()) object += ",\"" + std::string(name) + "\":" + value;
    return object + '}';
}

std::string json_findings(const std::vector<Finding>& findings, Degree degree) {
    std::vector<std::string> words;
    for (const Finding& finding : findings)
        if (type_of(finding.kind).degree == degree) words.push_back(words_of(finding));
    return '[' + joined(words, ",", json_quoted) + ']';
}

std::string command_words(const Step& step) {
    if (step.is_text) return quoted(step.bytes);
    std::string text = letters_of(step);
    for (const StepNumber& number : step.numbers)
        text += ' ' + std::to_string(number.value);
    return text + raw_words(step);
}

std::string verdict(const std::vector<Finding>& findings) {
    if (findings.empty()) return "ok";
    return joined(findings, "; ",
                  [](const Finding& f) { return (is_remark(f) ? "" : "hint: ") + words_of(f); });
}

std::string text_line(const std::string& time, const Step& step, const SourcePlace& place) {
    std::string line = time + ' ' + name_of(step.source) + ' ' + shown_bytes(step) + " | " +
                       command_words(step) + " | " + role_of(step) + " | ";
    const std::string where = words_of(place);
    if (!step.findings.empty() && !where.empty()) line += where + ": ";
    return line + verdict(step.findings);
}

std::string json_line(const std::string& time, const Step& step, const SourcePlace& place) {
    auto raw = raw_bytes(step);
    const bool is_command = !step.is_text;
    const auto number = [](const StepNumber& n) { return std::to_string(n.value); };
    std::string text = step.is_text ? json_quoted(text_of(step.bytes)) : "";
    if (is_command && !raw.empty() && as_text(raw)) text = json_quoted(text_of(raw));
    return json_object(
        time, {{"source", json_quoted(name_of(step.source))},
               {"file", place.file.empty() ? "" : json_quoted(place.file)},
               {"line", json_number(place.line)},
               {"column", json_number(place.column)},
               {"scenario_line", json_number(place.scenario_line)},
               {"bytes", '"' + hex_of(step.bytes, "") + '"'},
               {"count", std::to_string(step.count)},
               {"command", is_command ? json_quoted(letters_of(step)) : ""},
               {"parameters", is_command ? '[' + joined(step.numbers, ",", number) + ']' : ""},
               {"text", text},
               {"role", is_command && step.role == nullptr ? "" : json_quoted(role_of(step))},
               {"remarks", json_findings(step.findings, Degree::remark)},
               {"hints", json_findings(step.findings, Degree::hint)}});
}

}  // namespace orvanel
