#include "host/trace/remarks.h"

#include "base/hex.h"
#include "firmware/core/language/commands.h"
#include "firmware/store/ground/macro.h"

#include <algorithm>
#include <cstdint>

namespace orvanel {

namespace {

/// ` 'a'`, empty for a code that is no ASCII letter or sign.
std::string letter_of(int code) {
    if (code <= 0x20 || code > 0x7E) return "";
    return {' ', '\'', static_cast<char>(code), '\''};
}

bool is_letter(int code) { return code >= 'A' && code <= 'Z'; }

std::string listed(const std::string& letters) {
    std::string list;
    for (const char letter : letters)
        list += (list.empty() ? "" : ", ") + std::string(1, letter);
    return list;
}

/// The letters of the groups, or those that a group's commands have after it.
std::string group_letters() {
    std::string letters;
    for (std::uint8_t group = 'A'; group <= 'Z'; ++group)
        if (is_command_group(group)) letters += static_cast<char>(group);
    return letters;
}

std::string op_letters(std::uint8_t group) {
    std::string letters;
    for (char op = 'A'; op <= 'Z'; ++op)
        if (command_number(group, op) >= 0) letters += op;
    return letters;
}

}  // namespace

std::string words_of_cure(std::uint8_t lead_in, std::uint8_t group, std::uint8_t op) {
    if (!is_command_group(group)) return "; the groups are " + listed(group_letters());
    if (is_letter(op) && is_command_group(op) && command_number(op, group) >= 0)
        return std::string("; is it ") + (lead_in == '#' ? "#" : "ESC ") + static_cast<char>(op) +
               static_cast<char>(group) + '?';
    return std::string("; group ") + static_cast<char>(group) + " has " + listed(op_letters(group));
}

std::string name_of(const ByteSource& source) {
    switch (source.origin) {
    case ByteOrigin::companion:
        return "companion";
    case ByteOrigin::feed:
        return "feed";
    case ByteOrigin::line:
        return "line";
    case ByteOrigin::macro:
        break;
    }
    const char* kind = source.macro_table == touch_macro_table      ? "touch"
                       : source.macro_table == menu_macro_table     ? "menu"
                       : source.macro_table == power_on_macro_table ? "power-on"
                                                                    : "normal";
    return std::string(kind) + " macro " + std::to_string(source.number);
}

std::string words_of(Remark remark, int from, int to) {
    const std::string n = std::to_string(from);
    switch (remark) {
    case Remark::clamped:
        return n + " clamped to " + std::to_string(to);
    case Remark::wrapped:
        return n + " taken as " + std::to_string(to);
    case Remark::sign_dropped:
        return "a '-' was skipped";
    case Remark::undefined_group:
        return "undefined group, its letter went to the terminal";
    case Remark::undefined_op:
        return "undefined command, dropped";
    case Remark::missing_font:
        return "font " + n + " is missing";
    case Remark::missing_glyph:
        return words_of_missing_glyphs({&from, 1});
    case Remark::missing_picture:
        return "picture " + n + " is missing";
    case Remark::missing_border:
        return "border " + n + " is missing";
    case Remark::missing_macro:
        return "macro " + n + " is missing";
    case Remark::missing_bar:
        return "bar " + n + " is not defined";
    case Remark::missing_process:
        return "there is no process macro " + n;
    case Remark::macros_nested:
        return "macro " + n + " was not started, " + std::to_string(max_macro_depth) +
               " are running";
    case Remark::text_cut:
        return "text cut, its buffer is full";
    case Remark::picture_cut:
        return "cut at the edge of the glass";
    case Remark::menus_full:
        return "no menu is free, not defined";
    case Remark::areas_full:
        return "no touch area is free, the last one is replaced";
    case Remark::wrong_crc:
        return "the image holds CRC " + hex_digits(static_cast<std::uint32_t>(from), 4) +
               " and has " + hex_digits(static_cast<std::uint32_t>(to), 4);
    case Remark::eeprom_overflow:
        return "the EEPROM is full";
    case Remark::answer_dropped:
        return "an answer was dropped, nobody takes them";
    }
    return "";
}

std::string words_of_missing_glyphs(std::span<const int> codes) {
    constexpr std::size_t max_named = 8;
    std::string words = codes.size() == 1 ? "character" : "characters";
    for (std::size_t i = 0; i < std::min(codes.size(), max_named); ++i)
        words += (i == 0 ? " 0x" : ", 0x") + hex_digits(static_cast<std::uint32_t>(codes[i]), 2) +
                 letter_of(codes[i]);
    if (codes.size() > max_named)
        words += " and " + std::to_string(codes.size() - max_named) + " more";
    return words + (codes.size() == 1 ? " is not in the font" : " are not in the font");
}

}  // namespace orvanel
