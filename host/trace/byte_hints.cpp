#include "host/trace/byte_hints.h"

#include "base/hex.h"
#include "base/quoting.h"
#include "firmware/core/language/commands.h"

#include <algorithm>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace orvanel {

namespace {

constexpr std::uint8_t hash = '#', esc = 0x1B;

using Text = std::span<const std::uint8_t>;

/// What comes after the numbers.
Text rest_of(const Step& step) {
    return Text(step.bytes).subspan(std::min(step.raw_start, step.bytes.size()));
}

bool has_text(const Step& step) {
    const auto is_op_in = [&](std::string_view ops) {
        return step.op != 0 && ops.find(static_cast<char>(step.op)) != std::string_view::npos;
    };
    return (step.group == 'Z' && is_op_in("LCR")) || (step.group == 'A' && is_op_in("TKMUJ")) ||
           (step.group == 'N' && is_op_in("D"));
}

bool is_upper(std::uint8_t byte) { return byte >= 'A' && byte <= 'Z'; }

bool is_command(std::uint8_t group, std::uint8_t op) {
    return is_upper(group) && is_upper(op) && is_command_group(group) &&
           command_number(group, op) >= 0;
}

/// The text goes on to the next line end, over a command that was meant to be one.
void add_command_in_text(Step& step) {
    const Text text = rest_of(step);
    for (std::size_t at = 0; at < text.size(); ++at) {
        if ((text[at] != hash && text[at] != esc) || at + 2 >= text.size() ||
            !is_command(text[at + 1], text[at + 2]))
            continue;
        const std::string command = std::string(text[at] == esc ? "ESC " : "#") +
                                    static_cast<char>(text[at + 1]) +
                                    static_cast<char>(text[at + 2]);
        step.findings.push_back({FindingKind::text_took, "the text took " + in_quotes(command) +
                                                             " along: end it with a line end or a "
                                                             "zero before that"});
        return;
    }
}

bool is_of_number(std::uint8_t byte) { return (byte >= '0' && byte <= '9') || byte == ','; }

/// Whether all numbers are digits and commas, with a comma in them or right after them.
bool is_written_out(const Step& step) {
    if (step.bytes.front() != esc || step.numbers.size() < 2) return false;
    const std::size_t begin = step.numbers.front().begin;
    const std::size_t end = std::min(step.raw_start, step.bytes.size());
    if (begin >= end) return false;
    const Text numbers = Text(step.bytes).subspan(begin, end - begin);
    const Text rest = rest_of(step);
    return std::all_of(numbers.begin(), numbers.end(), is_of_number) &&
           (std::find(numbers.begin(), numbers.end(), ',') != numbers.end() ||
            (!rest.empty() && rest.front() == ','));
}

/// How many bytes from here on are one letter in UTF-8 beyond ASCII, 0 if they aren't.
std::size_t utf8_length(Text text) {
    const std::size_t length = text.front() >= 0xC2 && text.front() <= 0xDF   ? 2
                               : text.front() >= 0xE1 && text.front() <= 0xEF ? 3
                                                                              : 0;
    if (length == 0 || text.size() < length) return 0;
    const Text others = text.subspan(1, length - 1);
    const auto continues = [](std::uint8_t byte) { return byte >= 0x80 && byte <= 0xBF; };
    return std::all_of(others.begin(), others.end(), continues) ? length : 0;
}

void add_utf8(Step& step, Text text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::size_t length = utf8_length(text.subspan(at));
        if (length == 0) continue;
        step.findings.push_back(
            {FindingKind::utf8, hex_of(text.subspan(at, length), " ") +
                                    " is one letter in UTF-8 and " + std::to_string(length) +
                                    " characters here: write the module's byte for it, as in code "
                                    "page 437; in a kit a text may have the letter itself"});
        return;
    }
}

int numbers_taken_by(std::uint8_t group, std::uint8_t op) {
    const int row = is_command_group(group) ? command_number(group, op) : -1;
    if (row < 0) return 0;
    int count = 0;
    for (const Parameter& p : command_rows[static_cast<std::size_t>(row)].parameters)
        if (!is_raw(p.read)) count += numbers_of(p.read);
    return count;
}

}  // namespace

void add_byte_hints(Step& step) {
    if (step.bytes.empty()) return;
    if (step.is_text) return add_utf8(step, step.bytes);
    if (is_written_out(step)) {
        step.findings.push_back({FindingKind::digits,
                                 "after ESC each number is one byte, and digits and commas are "
                                 "bytes like others: write # in place of ESC"});
        return;
    }
    if (!has_text(step)) return;
    add_command_in_text(step);
    add_utf8(step, rest_of(step));
}

bool takes_esc(const Step& step) {
    return !step.bytes.empty() && step.bytes.front() == esc && !step.numbers.empty() &&
           step.numbers.back().end == step.count && step.numbers.back().value == esc;
}

bool add_taken_esc_hint(Step& step) {
    const Text text(step.bytes);
    if (text.size() < 2 || !is_command(text[0], text[1])) return false;
    step.findings.push_back({FindingKind::number_took,
                             "the command before this took its ESC for a number: one is missing "
                             "there"});
    return true;
}

void add_unfinished_hint(Step& step) {
    const std::string lacks = std::ssize(step.numbers) < numbers_taken_by(step.group, step.op)
                                  ? "its numbers aren't complete"
                              : has_text(step) ? "no line end or zero ends its text"
                                               : "bytes are missing";
    step.findings.push_back(
        {FindingKind::unfinished, "nothing more comes and " + lacks + ": the command waits"});
}

void add_macro_end_hint(Step& step) {
    step.findings.push_back(
        {FindingKind::unfinished,
         "the macro ends within this command: what comes next is taken for the rest of it"});
}

}  // namespace orvanel
