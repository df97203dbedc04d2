#include "host/import/file_kind.h"

#include "base/bmp.h"
#include "base/bytes.h"
#include "base/files.h"
#include "base/png.h"
#include "base/utf8.h"
#include "firmware/store/ground/eeprom.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <system_error>

namespace orvanel {

namespace {

constexpr std::size_t head_bytes = 64;                    // of a picture
constexpr std::size_t text_bytes = std::size_t{4} << 20;  // comments may stand above a first line

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

/// Whether it has the length of an image, and bytes that no text has.
bool is_like_an_image(const std::string& path) {
    Bytes content;
    if (!read_file(path, eeprom_large, content).empty()) return false;
    const bool fits = content.size() == eeprom_small || content.size() == eeprom_large;
    return fits && std::ranges::any_of(content, [](int byte) { return byte == 0 || byte == 0xFF; });
}

constexpr const char* for_headless = "It runs as orvanel42-headless FILE.scn";

}  // namespace

FileKind file_kind(std::string_view path, std::span<const std::uint8_t> start) {
    if (is_png(start)) return FileKind::png;
    const std::string_view text(reinterpret_cast<const char*>(start.data()), start.size());
    if (ends_in(path, ".kit") && begins_as_kit(text)) return FileKind::kit;
    if (ends_in(path, ".scn") && begins_as_scenario(text)) return FileKind::scenario;
    return FileKind::other;
}

FileKind kind_of_file(const std::string& path) {
    const bool is_source = ends_in(path, ".kit") || ends_in(path, ".scn");
    Bytes start;
    std::error_code fault;
    if (!read_file_start(path, is_source ? text_bytes : head_bytes, start).empty())
        return FileKind::other;
    const bool is_bmp = start.size() > bmp_file_head && start[0] == 'B' && start[1] == 'M' &&
                        bmp_head(start).file_size == std::filesystem::file_size(path, fault);
    return is_bmp && !fault ? FileKind::bmp : file_kind(path, start);
}

std::string scenario_refusal(std::string_view path) {
    return std::string(path) +
           " is a scenario. It plays the world around a module, and runs in the "
           "program without a window: orvanel42-headless FILE.scn";
}

std::string not_an_image(const std::string& path) {
    switch (kind_of_file(path)) {
    case FileKind::other:
        return {};
    case FileKind::png:
    case FileKind::bmp:
        return path + " is a picture, no EEPROM image. A module shows it that opens it: orvanel42 "
                      "FILE";
    case FileKind::kit:
        return path + " is the source of a kit, no EEPROM image. orvanel42-kit build FILE.kit -o "
                      "FILE.bin makes one of it";
    case FileKind::scenario:
        return path + " is a scenario, no EEPROM image. " + for_headless;
    }
    return {};
}

std::string not_a_kit(const std::string& path) {
    const FileKind kind = kind_of_file(path);
    if (kind == FileKind::png || kind == FileKind::bmp)
        return path + " is a picture, no source of a kit. A module shows it that opens it: "
                      "orvanel42 FILE, or 'open FILE' in a scenario";
    if (kind == FileKind::scenario)
        return path + " is a scenario, no source of a kit. " + for_headless;
    if (is_like_an_image(path))
        return path + " is an EEPROM image, no source of a kit. --image FILE loads it";
    return {};
}

std::string not_a_scenario(const std::string& path) {
    switch (kind_of_file(path)) {
    case FileKind::png:
    case FileKind::bmp:
        return "is a picture, no scenario. A module shows it that opens it: orvanel42 FILE, or "
               "'open FILE' in a scenario";
    case FileKind::kit:
        return "is the source of a kit, no scenario. orvanel42-headless --kit FILE.kit SCENARIO "
               "loads it, and orvanel42 FILE.kit opens it in the window";
    case FileKind::scenario:
        return {};
    case FileKind::other:
        break;
    }
    return is_like_an_image(path) ? "is an EEPROM image, no scenario. orvanel42-headless --image "
                                    "FILE SCENARIO loads it"
                                  : "";
}

}  // namespace orvanel
