#include "host/scenario/arguments.h"

#include "base/files.h"
#include "base/quoting.h"
#include "base/words.h"
#include "firmware/core/ground/draw_area.h"
#include "host/scenario/module_text.h"
#include "host/scenario/report.h"
#include "host/window/ground/dialog.h"

#include <array>
#include <filesystem>
#include <utility>

namespace orvanel {

namespace {

/// Paths start from the folder of the scenario, or the present one for standard input.
std::string resolved(const std::string& name) {
    return (std::filesystem::path(scenario_name).parent_path() / name).string();
}

std::string take_picture_path(std::string_view& rest, Arguments& into) {
    std::string fault = take_path(rest, into.path);
    if (fault.empty() && !is_picture_path(into.path))
        fault = in_quotes(into.path) + " ends neither in .png nor in .pbm";
    into.path = resolved(into.path);
    return fault;
}

std::string take_file_path(std::string_view& rest, std::string_view ending, Arguments& into) {
    std::string fault = take_path(rest, into.path);
    if (fault.empty() && !ends_in(into.path, ending))
        fault = in_quotes(into.path) + " doesn't end in " + std::string(ending);
    into.path = resolved(into.path);
    return fault;
}

void take_shown(std::string_view& rest, Arguments& into) {
    std::string_view ahead = rest;
    const std::string_view word = take_word(ahead);
    if (word != "main" && word != "flash") return;
    into.shown = word == "main" ? Shown::main : Shown::flash;
    rest = ahead;
}

std::string take_within(std::string_view& rest, const Argument& a, Arguments& into) {
    into.within_ms = a.otherwise;
    std::string_view ahead = rest;
    if (take_word(ahead) != "within") return {};
    rest = ahead;
    return take_number(rest, a.least, a.most, into.within_ms);
}

std::string take_key(std::string_view& rest, Arguments& into) {
    rest = trimmed(rest);
    if (rest.empty()) return "a key is missing";
    into.quoted = rest.front() == '"';
    if (!into.quoted) {
        into.word = std::exchange(rest, {});
        return {};
    }
    std::vector<std::uint8_t> text;
    std::string fault = take_bytes(rest, text);
    into.word.assign(text.begin(), text.end());
    return fault;
}

std::string take_control(std::string_view& rest, const Argument& a, Arguments& into) {
    into.number = dialog_close;
    std::string_view ahead = rest;
    if (take_word(ahead) == "close") {
        rest = ahead;
        return {};
    }
    into.value = a.otherwise;
    std::string fault = take_number(rest, a.least, a.most, into.number);
    if (!fault.empty() || trimmed(rest).empty()) return fault;
    return take_number(rest, 0, slider_end, into.value);
}

std::string take_message(std::string_view& rest, BridgeMessage& message) {
    for (std::uint32_t* part :
         {&message.number, &message.parameters.first, &message.parameters.second})
        if (std::string fault = take_hex_number(rest, *part); !fault.empty()) return fault;
    return {};
}

/// A text in double quotes, as codes of the module.
std::string take_module_text(std::string_view& rest, std::vector<std::uint8_t>& codes,
                             bool may_be_empty = false) {
    rest = trimmed(rest);
    if (rest.empty() || rest.front() != '"') return "a text in double quotes is missing";
    std::size_t end = 1;
    while (end < rest.size() && rest[end] != '"')
        end += rest[end] == '\\' ? 2 : 1;
    std::string_view quoted = rest.substr(0, end + 1);
    std::vector<std::uint8_t> bytes;
    std::string fault = take_bytes(quoted, bytes);
    if (fault.empty() && bytes.empty() && !may_be_empty) fault = "the text is empty";
    if (!fault.empty()) return fault;
    rest.remove_prefix(end + 1);
    codes.clear();
    return codes_of({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, codes);
}

bool begins_with_digit(std::string_view rest) {
    rest = trimmed(rest);
    return !rest.empty() && rest.front() >= '0' && rest.front() <= '9';
}

std::string take_rectangle(std::string_view& rest, DrawArea& area) {
    std::array<std::int64_t, 4> corners{};
    for (std::size_t i = 0; i < corners.size(); ++i)
        if (std::string fault = take_number(rest, 0, i % 2 == 0 ? last_x : last_y, corners[i]);
            !fault.empty())
            return fault;
    area = {static_cast<int>(corners[0]), static_cast<std::uint8_t>(corners[1]),
            static_cast<int>(corners[2]), static_cast<std::uint8_t>(corners[3])};
    const bool ordered = area.x1 <= area.x2 && area.y1 <= area.y2;
    return ordered ? "" : "the corners are out of order: left, top, right, bottom";
}

std::string take_where(std::string_view& rest, TextWhere& where) {
    for (;;) {
        std::string_view ahead = rest;
        const std::string_view word = take_word(ahead);
        if (word != "in" && word != "near" && word != "whole") return {};
        rest = ahead;
        std::string fault;
        if (word == "whole") {
            where.whole = true;
        } else if (word == "near") {
            fault = take_module_text(rest, where.near);
        } else if (take_word(ahead) == "any" && take_word(ahead) == "phase") {
            where.any_phase = true;
            rest = ahead;
        } else {
            fault = take_rectangle(rest, where.inside.emplace());
        }
        if (!fault.empty()) return fault;
    }
}

std::string take_part(std::string_view& rest, ScreenPart& part) {
    for (;;) {
        std::string_view ahead = rest;
        const std::string_view word = take_word(ahead);
        if (word != "in" && word != "except") return {};
        rest = ahead;
        DrawArea& area = word == "in" ? part.inside.emplace() : part.except.emplace_back();
        if (std::string fault = take_rectangle(rest, area); !fault.empty()) return fault;
    }
}

std::string take_target(std::string_view& rest, const Argument& a, Target& target) {
    if (trimmed(rest).empty()) return "what to touch is missing";
    if (trimmed(rest).front() == '"') {
        target.by = By::label;
        return take_module_text(rest, target.label);
    }
    std::int64_t first = 0, second = 0;
    if (std::string fault = take_number(rest, a.least, a.most, first); !fault.empty()) return fault;
    target.by = By::number;
    target.number = static_cast<int>(first);
    if (!begins_with_digit(rest)) return {};
    target.by = By::dot;
    target.x = target.number;
    if (first > last_x)
        return std::to_string(first) + " is not one of 0.." + std::to_string(last_x);
    std::string fault = take_number(rest, 0, last_y, second);
    target.y = static_cast<int>(second);
    return fault;
}

std::string take_lasting(std::string_view& rest, const Argument& a, Arguments& into) {
    into.number = a.otherwise;
    std::string_view ahead = rest;
    if (take_word(ahead) != "for") return {};
    rest = ahead;
    return take_number(rest, a.least, a.most, into.number);
}

/// `to VALUE`, `to VALUE %`, or from a dot `to X Y`.
std::string take_goal(std::string_view& rest, const Argument& a, Arguments& into) {
    if (take_word(rest) != "to") return "'to' is missing";
    if (into.target.by == By::dot) {
        std::string fault = take_number(rest, 0, last_x, into.x);
        return fault.empty() ? take_number(rest, 0, last_y, into.y) : fault;
    }
    rest = trimmed(rest);
    into.percent = rest.ends_with('%');
    if (into.percent) rest.remove_suffix(1);
    return take_number(rest, a.least, into.percent ? 100 : a.most, into.value);
}

}  // namespace

std::string take_argument(std::string_view& rest, const Argument& a, Arguments& into) {
    switch (a.take) {
    case Take::none:
        return {};
    case Take::bytes:
        return take_bytes(rest, into.bytes);
    case Take::path: {
        std::string fault = take_path(rest, into.path);
        into.path = resolved(into.path);
        return fault;
    }
    case Take::picture:
        return take_picture_path(rest, into);
    case Take::file:
        return take_file_path(rest, a.ending, into);
    case Take::shown:
        take_shown(rest, into);
        return {};
    case Take::number:
        into.number = a.otherwise;
        if (a.otherwise >= 0 && trimmed(rest).empty()) return {};
        return take_number(rest, a.least, a.most, into.number);
    case Take::dot: {
        std::string fault = take_number(rest, 0, last_x, into.x);
        return fault.empty() ? take_number(rest, 0, last_y, into.y) : fault;
    }
    case Take::place: {
        into.x = into.y = a.otherwise;
        if (trimmed(rest).empty()) return {};
        std::string fault = take_number(rest, a.least, a.most, into.x);
        return fault.empty() ? take_number(rest, a.least, a.most, into.y) : fault;
    }
    case Take::pixel: {
        std::string fault = take_number(rest, a.least, a.most, into.x);
        return fault.empty() ? take_number(rest, a.least, a.most, into.y) : fault;
    }
    case Take::key:
        return take_key(rest, into);
    case Take::control:
        return take_control(rest, a, into);
    case Take::message:
        return take_message(rest, into.message);
    case Take::word:
        into.word = take_word(rest);
        return into.word.empty() ? "a name is missing" : "";
    case Take::within:
        return take_within(rest, a, into);
    case Take::target:
        return take_target(rest, a, into.target);
    case Take::lasting:
        return take_lasting(rest, a, into);
    case Take::text:
        return take_module_text(rest, into.bytes, a.least == 0);
    case Take::where:
        return take_where(rest, into.where);
    case Take::part:
        return take_part(rest, into.part);
    case Take::goal:
        return take_goal(rest, a, into);
    }
    return {};
}

}  // namespace orvanel
