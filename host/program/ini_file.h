// ini_file.h: a file of the user's with sections and `key=value` lines. It is edited in place:
// what isn't asked for stays as the user wrote it, comments, order, spacing and line ends included.
// The form stands in docs/reference/settings.md.

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

/// The value of the first such key in the first such section, none if it isn't there. Section and
/// key match whatever the case of their letters. Without the blanks around it, a comment after
/// it, and one pair of quotes. Points into `text`.
std::optional<std::string_view> ini_value(std::string_view text, std::string_view section,
                                          std::string_view key);

/// Whether the text has such a section.
bool has_ini_section(std::string_view text, std::string_view section);

/// A line that says something: the head of a section, or anything else that is no comment.
struct IniLine {
    int number;                               // from 1
    std::optional<std::string_view> section;  // that it heads or stands in; none before the first
    bool is_head;
    std::string_view key;  // before the `=`; empty in a head, and where there is none
};
/// All of them. What they say points into `text`.
std::vector<IniLine> ini_lines(std::string_view text);

/// Gives that key this value, unless it has it. A new key goes after the section's last one, a
/// new section to the end of the text. The value is a plain word: no blank, quote, semicolon.
void set_ini_value(std::string& text, std::string_view section, std::string_view key,
                   std::string_view value);

/// Takes each such key out of each such section with its line, and the head of the section too if
/// nothing else is left in it.
void remove_ini_value(std::string& text, std::string_view section, std::string_view key);

/// Whether the names of two sections or keys are the same: the case of ASCII letters is none.
bool same_name(std::string_view a, std::string_view b);

/// Bytes of a file: beyond it nobody means settings.
constexpr std::size_t max_ini_bytes = 1024 * 1024;

/// Reads the whole file, of max_ini_bytes bytes at most; a file that isn't there is an empty one.
/// The result is empty on success, else the path and what went wrong.
std::string load_ini(const std::string& path, std::string& text);

}  // namespace orvanel
