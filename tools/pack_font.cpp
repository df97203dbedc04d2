// pack_font.cpp: turns the font drawn in dots (data/font/builtin.txt) into the font image, as a
// list of bytes that a C++ array takes in with #include.
//
//     pack_font builtin.txt OUT.inc
//
// The head of the source tells its format; firmware/core/language/eeprom_layout.h that of the
// image.
//
// Leaves with 0, or with 1 after one message on stderr; a source that is refused writes nothing.

#include "base/hex.h"
#include "firmware/core/language/eeprom_layout.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <istream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {
namespace {

constexpr int first_code = 0x20;
constexpr int last_code = 0xFF;
constexpr int cell_width = 8;  // dots; one byte holds a row
constexpr int cell_height = 8;
constexpr std::uint8_t image_format = 1;
constexpr std::uint8_t line_gap = 0;
constexpr std::size_t code_count = last_code - first_code + 1;
constexpr std::size_t glyph_bits_offset = font_head_size + glyph_entry_size * code_count;
static_assert(glyph_bits_offset == 0x02B0);

constexpr int bytes_per_line = 16;

using GlyphRows = std::array<std::uint8_t, cell_height>;

/// What the source holds: one place a code from first_code on, empty for a code without a glyph.
using Glyphs = std::array<std::optional<GlyphRows>, code_count>;

/// The source and the line being read, so that a message can tell the place.
struct Source {
    std::string_view name;  // as given on the command line
    std::istream* lines;
    int line_number;  // of `line`, from 1; 0 before the first
    std::string line;
};

void report(const Source& source, const std::string& message) {
    std::fprintf(stderr, "%.*s:%d: error: %s\n", static_cast<int>(source.name.size()),
                 source.name.data(), source.line_number, message.c_str());
}

bool fail(std::string_view file, const char* message) {
    std::fprintf(stderr, "%.*s: error: %s\n", static_cast<int>(file.size()), file.data(), message);
    return false;
}

/// Steps to the next line; false at the end, where line_number is one past the last line.
bool next_line(Source& source) {
    ++source.line_number;
    if (!std::getline(*source.lines, source.line)) {
        source.line.clear();
        return false;
    }
    if (!source.line.empty() && source.line.back() == '\r') source.line.pop_back();
    return true;
}

/// A line for the reader alone: a comment, or nothing but blanks.
bool is_silent(std::string_view line) {
    const std::size_t start = line.find_first_not_of(" \t");
    return start == std::string_view::npos || line[start] == ';';
}

/// The code of a line `0x41 A`; nothing where the line isn't two hex digits, a blank and a name.
std::optional<int> entry_code(std::string_view line) {
    if (line.size() < 6 || line.substr(0, 2) != "0x" || line[4] != ' ') return std::nullopt;
    const int code = hex_pair(line.substr(2));
    if (code < 0 || line.find_first_not_of(' ', 5) == std::string_view::npos) return std::nullopt;
    return code;
}

std::string code_name(int code) {
    const auto value = static_cast<std::uint32_t>(code);
    return {'0', 'x', hex_character(value >> 4), hex_character(value)};
}

/// One row of dots as a byte, the leftmost dot in bit 7; nothing where the line isn't such a row.
std::optional<std::uint8_t> row_byte(std::string_view line) {
    if (line.size() != cell_width || line.find_first_not_of(".#") != std::string_view::npos) {
        return std::nullopt;
    }
    int byte = 0;
    for (const char dot : line)
        byte = byte << 1 | (dot == '#' ? 1 : 0);
    return static_cast<std::uint8_t>(byte);
}

/// Reads the rows below the line that names `code`; nothing after a message.
std::optional<GlyphRows> read_rows(Source& source, int code) {
    GlyphRows rows{};
    for (int i = 0; i < cell_height; ++i) {
        const bool at_end = !next_line(source);
        if (at_end || is_silent(source.line) || entry_code(source.line)) {
            report(source, code_name(code) + " has " + std::to_string(i) + " rows, not " +
                               std::to_string(cell_height));
            return std::nullopt;
        }
        const std::optional<std::uint8_t> row = row_byte(source.line);
        if (!row) {
            report(source, "a row of " + code_name(code) + " is " + std::to_string(cell_width) +
                               " characters, each . or #");
            return std::nullopt;
        }
        rows[static_cast<std::size_t>(i)] = *row;
    }
    return rows;
}

/// Reads the whole source; nothing after a message.
std::optional<Glyphs> read_glyphs(Source& source) {
    Glyphs glyphs{};
    int previous = first_code - 1;
    while (next_line(source)) {
        if (is_silent(source.line)) continue;
        const std::optional<int> code = entry_code(source.line);
        if (!code) {
            // After an entry this is most often a row too many.
            report(source, row_byte(source.line) ? "a row outside an entry of 8 rows"
                                                 : "expected an entry such as `0x41 A`");
            return std::nullopt;
        }
        if (*code < first_code) {
            report(source, code_name(*code) + " is outside " + code_name(first_code) + " to " +
                               code_name(last_code));
            return std::nullopt;
        }
        if (*code <= previous) {
            report(source, *code == previous
                               ? code_name(*code) + " stands twice"
                               : code_name(*code) + " comes after " + code_name(previous));
            return std::nullopt;
        }
        previous = *code;
        const std::optional<GlyphRows> rows = read_rows(source, *code);
        if (!rows) return std::nullopt;
        glyphs[static_cast<std::size_t>(*code - first_code)] = rows;
    }
    if (source.lines->bad()) {
        report(source, "cannot read on");
        return std::nullopt;
    }
    if (previous < first_code) {
        report(source, "no glyph in the file");
        return std::nullopt;
    }
    return glyphs;
}

void append_le16(std::vector<std::uint8_t>& bytes, std::size_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    bytes.push_back(static_cast<std::uint8_t>(value >> 8));
}

std::vector<std::uint8_t> pack(const Glyphs& glyphs) {
    std::vector<std::uint8_t> image(font_magic.begin(), font_magic.end());
    for (const int byte :
         {int{image_format}, int{first_code}, int{last_code}, int{cell_width}, int{cell_height}})
        image.push_back(static_cast<std::uint8_t>(byte));
    append_le16(image, glyph_bits_offset);
    image.push_back(line_gap);
    image.resize(font_head_size);

    std::vector<std::uint8_t> bits;
    for (const std::optional<GlyphRows>& rows : glyphs) {
        image.push_back(rows ? cell_width : 0);
        append_le16(image, rows ? bits.size() : 0);
        if (rows) bits.insert(bits.end(), rows->begin(), rows->end());
    }
    image.insert(image.end(), bits.begin(), bits.end());
    return image;
}

/// The bytes as text: two hex digits each, bytes_per_line in a line, a comma after each.
std::string listing(const std::vector<std::uint8_t>& bytes) {
    std::string text;
    int in_line = 0;
    for (const std::uint8_t byte : bytes) {
        if (in_line > 0) text += ' ';
        text += code_name(byte) + ',';
        if (++in_line == bytes_per_line) {
            text += '\n';
            in_line = 0;
        }
    }
    if (in_line > 0) text += '\n';
    return text;
}

/// Writes the file; false after a message. A file that couldn't be written whole doesn't stay,
/// since a build would take it for finished.
bool write_file(const char* path, const std::string& text) {
    std::FILE* file = std::fopen(path, "wb");
    if (file == nullptr) return fail(path, "cannot open for writing");
    const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    // The last bytes may only now leave the buffer, so closing can fail as well.
    const bool closed = std::fclose(file) == 0;
    if (written && closed) return true;
    // Only a plain file is ours to remove: the path may name a device.
    std::error_code ignored;
    if (std::filesystem::is_regular_file(path, ignored)) std::filesystem::remove(path, ignored);
    return fail(path, "cannot write");
}

bool run(const char* source_path, const char* out_path) {
    std::ifstream stream(source_path, std::ios::binary);
    if (!stream) return fail(source_path, "cannot open");
    Source source{source_path, &stream, 0, {}};
    const std::optional<Glyphs> glyphs = read_glyphs(source);
    return glyphs && write_file(out_path, listing(pack(*glyphs)));
}

}  // namespace
}  // namespace orvanel

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: pack_font SOURCE.txt OUT.inc\n");
        return 1;
    }
    return orvanel::run(argv[1], argv[2]) ? 0 : 1;
}
