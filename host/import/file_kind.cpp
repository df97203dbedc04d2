#include "host/import/file_kind.h"

#include "base/files.h"
#include "base/png.h"
#include "base/utf8.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace orvanel {

namespace {

constexpr std::size_t looked_at = 4096;  // bytes; a comment may stand above a first line

std::string_view trimmed_line(std::string_view line) {
    constexpr std::string_view blanks = " \t\r";
    const std::size_t begin = std::min(line.find_first_not_of(blanks), line.size());
    return line.substr(begin, line.find_last_not_of(blanks) + 1 - begin);
}

/// The first line that says something; empty if there is none.
std::string_view first_line(std::string_view text) {
    text = after_mark(text);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = trimmed_line(text.substr(0, end));
        if (!line.empty() && line.front() != ';') return line;
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return {};
}

bool begins_as_kit(std::string_view text) {
    const std::string_view line = first_line(text);
    const std::string_view word = line.substr(0, line.find_first_of(" \t"));
    return line.starts_with('[') || word == "kit" || word == "include";
}

bool begins_as_scenario(std::string_view text) {
    std::string_view line = first_line(text);
    constexpr std::string_view word = "scenario";
    if (!line.starts_with(word)) return false;
    line.remove_prefix(word.size());
    return (line.starts_with(' ') || line.starts_with('\t')) && trimmed_line(line) == "1";
}

}  // namespace

FileKind file_kind(std::string_view path, std::span<const std::uint8_t> start) {
    if (is_png(start)) return FileKind::png;
    start = start.first(std::min(start.size(), looked_at));
    const std::string text(start.begin(), start.end());
    if (ends_in(path, ".kit") && begins_as_kit(text)) return FileKind::kit;
    if (ends_in(path, ".scn") && begins_as_scenario(text)) return FileKind::scenario;
    return FileKind::other;
}

std::string scenario_refusal(std::string_view path) {
    return std::string(path) +
           " is a scenario. It plays the world around a module, and runs in the "
           "program without a window: orvanel42-headless FILE.scn";
}

std::string not_an_image(const std::string& path) {
    std::vector<std::uint8_t> start;
    if (!read_file_start(path, looked_at, start).empty()) return {};
    switch (file_kind(path, start)) {
    case FileKind::other:
        return {};
    case FileKind::png:
        return path + " is a picture, no EEPROM image. A module shows it that opens it: orvanel42 "
                      "FILE.png";
    case FileKind::kit:
        return path + " is the source of a kit, no EEPROM image. orvanel42-kit build FILE.kit -o "
                      "FILE.bin makes one of it";
    case FileKind::scenario:
        return path + " is a scenario, no EEPROM image. It runs as orvanel42-headless FILE.scn";
    }
    return {};
}

}  // namespace orvanel
