#include "base/words.h"

#include "base/bytes.h"
#include "base/hex.h"
#include "base/quoting.h"

#include <algorithm>
#include <charconv>

namespace orvanel {

namespace {

constexpr std::string_view blanks = " \t";

void skip_blanks(std::string_view& rest) {
    rest.remove_prefix(std::min(rest.find_first_not_of(blanks), rest.size()));
}

std::string_view take_until(std::string_view& rest, std::string_view ends) {
    const std::string_view word = rest.substr(0, rest.find_first_of(ends));
    rest.remove_prefix(word.size());
    return word;
}

std::string take_hex(std::string_view& rest, std::vector<std::uint8_t>& bytes) {
    const std::string_view digits = take_until(rest, " \t\"");
    if (!is_hex(digits))
        return in_quotes(digits) + " is neither hexadecimal nor text in double quotes";
    if (digits.size() % 2 != 0)
        return in_quotes(digits) + " has an odd number of hexadecimal digits";
    append_hex_pairs(digits, bytes);
    return {};
}

/// `rest` stands after a backslash.
std::string take_escape(std::string_view& rest, std::vector<std::uint8_t>& bytes) {
    if (rest.empty()) return "the text lacks its closing quote";
    const char letter = rest.front();
    rest.remove_prefix(1);
    if (letter != 'x') {
        const int byte = escaped_byte(letter);
        if (byte < 0) return printable({&letter, 1}) + " is no escape behind \\";
        bytes.push_back(low8(byte));
        return {};
    }
    const int byte = hex_pair(rest);
    if (byte < 0) return "\\x takes two hexadecimal digits";
    bytes.push_back(low8(byte));
    rest.remove_prefix(2);
    return {};
}

/// `rest` stands after the opening quote.
std::string take_text(std::string_view& rest, std::vector<std::uint8_t>& bytes) {
    while (!rest.empty()) {
        const char c = rest.front();
        rest.remove_prefix(1);
        if (c == '"') return {};
        if (c != '\\') {
            bytes.push_back(static_cast<std::uint8_t>(c));
            continue;
        }
        std::string fault = take_escape(rest, bytes);
        if (!fault.empty()) return fault;
    }
    return "the text lacks its closing quote";
}

}  // namespace

std::string_view trimmed(std::string_view text) {
    skip_blanks(text);
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

std::string_view take_word(std::string_view& rest) {
    skip_blanks(rest);
    return take_until(rest, blanks);
}

std::string take_bytes(std::string_view& rest, std::vector<std::uint8_t>& bytes) {
    for (;;) {
        std::string_view ahead = rest;
        if (const std::string_view word = take_word(ahead); word.empty() || word == "within")
            return {};
        skip_blanks(rest);
        std::string fault;
        if (rest.front() == '"') {
            rest.remove_prefix(1);
            fault = take_text(rest, bytes);
        } else {
            fault = take_hex(rest, bytes);
        }
        if (!fault.empty()) return fault;
    }
}

std::string take_path(std::string_view& rest, std::string& path) {
    skip_blanks(rest);
    if (rest.empty()) return "a path is missing";
    if (rest.front() != '"') {
        path = take_word(rest);
        return {};
    }
    rest.remove_prefix(1);
    const std::size_t end = rest.find('"');
    if (end == std::string_view::npos) return "the path lacks its closing quote";
    path = rest.substr(0, end);
    rest.remove_prefix(end + 1);
    return path.empty() ? "the path is empty" : "";
}

std::string take_number(std::string_view& rest, std::int64_t min, std::int64_t max,
                        std::int64_t& value) {
    const std::string_view word = take_word(rest);
    const std::string range = std::to_string(min) + " to " + std::to_string(max);
    if (word.empty()) return "a number is missing, " + range;
    const std::string_view digits = word.substr(min < 0 && word.starts_with('-') ? 1 : 0);
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string_view::npos)
        return in_quotes(word) + " is no number, " + range;
    const auto [end, fault] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (fault != std::errc{} || value < min || value > max)
        return printable(word) + " is outside " + range;
    return {};
}

std::string take_hex_number(std::string_view& rest, std::uint32_t& value) {
    const std::string_view word = take_word(rest);
    if (word.empty()) return "a hexadecimal number is missing";
    const auto [end, fault] = std::from_chars(word.data(), word.data() + word.size(), value, 16);
    if (fault == std::errc{} && end == word.data() + word.size()) return {};
    return in_quotes(word) + " is no hexadecimal number of 32 bits";
}

}  // namespace orvanel
