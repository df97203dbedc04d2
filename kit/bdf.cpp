#include "kit/bdf.h"

#include "base/hex.h"
#include "base/words.h"
#include "kit/code_page.h"

#include <algorithm>
#include <charconv>

namespace orvanel {

namespace {

constexpr std::string_view own_registry = "Orvanel42";
constexpr int max_glyph = 512;  // dots a side, and around the point

struct BdfReader {
    std::string name;
    std::string_view rest;
    int number;  // of the present line
    std::string_view line;
    bool codes;  // the registry is our own
    int ascent, descent;
    bool has_metrics;
    std::map<int, DrawnGlyph> by_number;
};

[[noreturn]] void fail(const BdfReader& reader, const std::string& what) {
    throw Fault({reader.name, reader.number, 0}, what);
}

bool next_line(BdfReader& reader) {
    if (reader.rest.empty()) return false;
    const std::size_t end = std::min(reader.rest.find('\n'), reader.rest.size());
    reader.line = reader.rest.substr(0, end);
    reader.rest.remove_prefix(std::min(end + 1, reader.rest.size()));
    while (!reader.line.empty() && (reader.line.back() == '\r' || reader.line.back() == ' '))
        reader.line.remove_suffix(1);
    ++reader.number;
    return true;
}

int take_int(BdfReader& reader, int min, int max) {
    std::string_view rest = reader.line;
    const std::string_view word = take_word(rest);
    int value = 0;
    const auto [end, fault] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (word.empty() || fault != std::errc{} || end != word.data() + word.size() || value < min ||
        value > max)
        fail(reader, "expected a number, " + std::to_string(min) + " to " + std::to_string(max));
    reader.line = rest;
    return value;
}

/// One line of hexadecimal digits, the leftmost dot in the highest bit.
void read_row(BdfReader& reader, Dots& dots, int y) {
    if (!next_line(reader)) fail(reader, "the file ends within a character");
    const int digits = stride_of(dots.width) * 2;
    const std::string_view row = reader.line.substr(0, static_cast<std::size_t>(digits));
    if (std::ssize(row) < digits || !is_hex(row))
        fail(reader, "expected a row of " + std::to_string(digits) + " hexadecimal digits");
    for (int x = 0; x < dots.width; ++x) {
        const int value = hex_digit(row[static_cast<std::size_t>(x / 4)]);
        if ((value >> (3 - x % 4) & 1) != 0) set_dot(dots, x, y);
    }
}

/// The module's code of a character's number, -1 if it has none.
int code_of_number(const BdfReader& reader, int number) {
    return reader.codes ? number : code_of(number);
}

bool is_wanted(const BdfReader& reader, int number, const Codes& wanted) {
    const int code = code_of_number(reader, number);
    return code >= 0 && code < code_count && wanted[static_cast<std::size_t>(code)];
}

/// The lines from STARTCHAR to ENDCHAR.
void read_character(BdfReader& reader, const Codes& wanted) {
    DrawnGlyph glyph{-1, 0, 0, blank_dots(0, 0)};
    int number = -1;
    bool has_box = false;
    for (;;) {
        if (!next_line(reader)) fail(reader, "the file ends within a character");
        const std::string_view word = take_word(reader.line);
        if (word == "ENCODING") {
            number = take_int(reader, -1, 0x10FFFF);
        } else if (word == "DWIDTH") {
            glyph.advance = take_int(reader, 0, max_glyph);
        } else if (word == "BBX") {
            const int width = take_int(reader, 0, max_glyph);
            const int height = take_int(reader, 0, max_glyph);
            glyph.left = take_int(reader, -max_glyph, max_glyph);
            glyph.top = take_int(reader, -max_glyph, max_glyph) + height;
            glyph.dots = blank_dots(width, height);
            has_box = true;
        } else if (word == "BITMAP") {
            if (!has_box) fail(reader, "expected BBX before BITMAP");
            for (int y = 0; y < glyph.dots.height; ++y)
                read_row(reader, glyph.dots, y);
        } else if (word == "ENDCHAR") {
            break;
        }
    }
    if (!is_wanted(reader, number, wanted)) return;
    if (!has_box || glyph.advance < 0) fail(reader, "the character lacks BBX or DWIDTH");
    if (!reader.by_number.emplace(number, std::move(glyph)).second)
        fail(reader, "the character " + std::to_string(number) + " is there twice");
}

void read_property(BdfReader& reader, std::string_view word) {
    if (word == "FONT_ASCENT") {
        reader.ascent = take_int(reader, -max_glyph, max_glyph);
        reader.has_metrics = true;
    } else if (word == "FONT_DESCENT") {
        reader.descent = take_int(reader, -max_glyph, max_glyph);
        reader.has_metrics = true;
    } else if (word == "CHARSET_REGISTRY") {
        reader.codes = reader.line.find(own_registry) != std::string_view::npos;
    } else if (word == "FONTBOUNDINGBOX" && !reader.has_metrics) {
        take_int(reader, 0, max_glyph);
        const int height = take_int(reader, 0, max_glyph);
        take_int(reader, -max_glyph, max_glyph);
        reader.descent = -take_int(reader, -max_glyph, max_glyph);
        reader.ascent = height - reader.descent;
    }
}

std::string hex_rows(const Dots& dots) {
    std::string text;
    const auto stride = static_cast<std::size_t>(stride_of(dots.width));
    for (std::size_t i = 0; i < dots.rows.size(); ++i) {
        text += hex_digits(dots.rows[i], 2);
        if ((i + 1) % stride == 0) text += '\n';
    }
    return text;
}

}  // namespace

Font read_bdf(const std::string& name, std::string_view text, const Codes& wanted,
              Encoding encoding) {
    BdfReader reader{name, text, 0, {}, false, 0, 0, false, {}};
    if (!next_line(reader) || !reader.line.starts_with("STARTFONT"))
        fail(reader, "expected STARTFONT: this is no BDF");
    bool ended = false, characters = false;
    while (!ended && next_line(reader)) {
        const std::string_view word = take_word(reader.line);
        ended = word == "ENDFONT";
        if (word != "STARTCHAR") {
            // Behind the first character a property would change what its number has meant.
            if (!characters) read_property(reader, word);
            continue;
        }
        characters = true;
        if (encoding != Encoding::stated) reader.codes = encoding == Encoding::codes;
        read_character(reader, wanted);
    }
    if (!ended) fail(reader, "expected ENDFONT: the file is cut short");
    std::map<int, DrawnGlyph> by_code;
    for (auto& [number, glyph] : reader.by_number)
        by_code.emplace(code_of_number(reader, number), std::move(glyph));
    return font_of(by_code, reader.ascent, reader.descent);
}

std::string write_bdf(const Font& font, std::string_view name) {
    const int descent = font.height - font.ascent;
    const auto number = [](int value) { return std::to_string(value); };
    int widest = 0;
    for (const auto& [code, glyph] : font.glyphs)
        widest = std::max(widest, glyph.width);
    std::string text =
        "STARTFONT 2.1\nFONT " + std::string(name) + "\nSIZE " + number(font.height) +
        " 75 75\nFONTBOUNDINGBOX " + number(widest) + " " + number(font.height) + " 0 " +
        number(-descent) + "\nSTARTPROPERTIES 4\nFONT_ASCENT " + number(font.ascent) +
        "\nFONT_DESCENT " + number(descent) + "\nCHARSET_REGISTRY \"" + std::string(own_registry) +
        "\"\nCHARSET_ENCODING \"0\"\nENDPROPERTIES\nCHARS " + std::to_string(font.glyphs.size()) +
        "\n";
    for (const auto& [code, glyph] : font.glyphs)
        text += "STARTCHAR C" + number(code) + "\nENCODING " + number(code) + "\nSWIDTH " +
                number(glyph.width * 1000 / font.height) + " 0\nDWIDTH " + number(glyph.width) +
                " 0\nBBX " + number(glyph.width) + " " + number(font.height) + " 0 " +
                number(-descent) + "\nBITMAP\n" + hex_rows(glyph) + "ENDCHAR\n";
    return text + "ENDFONT\n";
}

}  // namespace orvanel
