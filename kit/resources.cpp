#include "kit/resources.h"

#include "base/bytes.h"
#include "base/files.h"
#include "base/quoting.h"
#include "kit/bdf.h"
#include "kit/code_page.h"
#include "kit/outline.h"

#include <algorithm>
#include <optional>

namespace orvanel {

namespace {

constexpr std::size_t max_file_bytes = std::size_t{32} << 20;  // bytes
constexpr int max_size = 255;                                  // dots
constexpr int first_default = 32, last_default = 126;          // codes of ASCII

/// A file that a setting names.
struct NamedFile {
    std::string path;
    Scanner place;
    bool given;
};

NamedFile take_file(Setting& setting) {
    NamedFile file{{}, setting.value, true};
    file.path = path_beside(setting.value.line->file, take_path(setting.value));
    return file;
}

[[noreturn]] void fail_file(const NamedFile& file, const std::string& what) {
    fail(file.place, in_quotes(file.path) + " " + what);
}

Bytes read_named(const NamedFile& file) {
    Bytes content;
    const std::string fault = read_file(file.path, max_file_bytes, content);
    if (!fault.empty()) fail_file(file, "can't be read: " + fault);
    return content;
}

// Fonts.

struct FontSettings {
    NamedFile file;
    std::optional<Scanner> size_place, codes_place, encoding_place;
    int size;
    Codes wanted;  // that will be taken where the file has them
    Bytes needed;  // codes that the file must have
    Encoding encoding;
    int gap, width, format, spacing;  // -1: as the file says
    bool trim;
};

constexpr std::string_view font_keys =
    "file, size, range, chars, encoding, gap, width, format, spacing, trim, at or same";

/// `32..126, 0x80..0xA5, 248`
void take_ranges(Scanner& scanner, Codes& wanted) {
    do {
        peek(scanner);
        const Scanner start = scanner;
        const int first = take_number(scanner, 0, code_count - 1);
        int last = first;
        if (take_char(scanner, '.')) {
            expect_char(scanner, '.');
            last = take_number(scanner, 0, code_count - 1);
        }
        if (last < first) fail(start, "the range ends before it begins");
        for (int code = first; code <= last; ++code)
            wanted.set(static_cast<std::size_t>(code));
    } while (take_char(scanner, ','));
}

Encoding take_encoding(Scanner& scanner) {
    peek(scanner);
    const Scanner start = scanner;
    const std::string_view word = take_name(scanner);
    if (word == "unicode") return Encoding::unicode;
    if (word == "codes") return Encoding::codes;
    fail(start, "expected unicode or codes");
}

void take_font_setting(Setting& setting, const Names& names, FontSettings& font) {
    Scanner& value = setting.value;
    const auto number = [&](int min, int max) {
        return take_sum(value, names, Kind::number, setting.key, min, max);
    };
    if (setting.key == "file") {
        font.file = take_file(setting);
    } else if (setting.key == "size") {
        font.size_place = setting.key_place;
        font.size = number(1, max_size);
    } else if (setting.key == "range") {
        font.codes_place = setting.key_place;
        take_ranges(value, font.wanted);
    } else if (setting.key == "chars") {
        font.codes_place = setting.key_place;
        font.needed = take_text(value);
        for (const std::uint8_t code : font.needed)
            font.wanted.set(code);
    } else if (setting.key == "encoding") {
        font.encoding_place = setting.key_place;
        font.encoding = take_encoding(value);
    } else if (setting.key == "gap") {
        font.gap = number(0, 255);
    } else if (setting.key == "width") {
        font.width = number(1, 255);
    } else if (setting.key == "format") {
        font.format = number(0, 255);
    } else if (setting.key == "spacing") {
        font.spacing = number(0, 255);
    } else if (setting.key == "trim") {
        font.trim = take_yes(value);
    } else {
        fail_key(setting, font_keys);
    }
}

void check_needed(const FontSettings& settings, const Font& font) {
    for (const std::uint8_t code : settings.needed)
        if (!font.glyphs.contains(code))
            fail_file(settings.file, "has no character " + text_of(std::span(&code, 1)));
}

void refuse(const std::optional<Scanner>& place, const char* what) {
    if (place) fail(*place, what);
}

Font drawn_font(const FontSettings& settings, std::span<const std::uint8_t> file) {
    constexpr std::string_view bdf_begin = "STARTFONT";
    const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
    if (text.starts_with(bdf_begin)) {
        refuse(settings.size_place, "a BDF has one size, its own; leave size out");
        return read_bdf(settings.file.path, text, settings.wanted, settings.encoding);
    }
    refuse(settings.encoding_place, "encoding is for a BDF; leave it out");
    if (!settings.size_place) fail(settings.file.place, "expected size = DOTS for this font too");
    Font font;
    const std::string fault = read_outlines(file, settings.size, settings.wanted, font);
    if (!fault.empty()) fail_file(settings.file, fault);
    return font;
}

/// A file that is a font of the image already, as dump writes one that no BDF can stand for.
Bytes finished_font(const FontSettings& settings, Bytes file) {
    FontHead head{};
    if (!read_font_head(file, head)) fail_file(settings.file, "is a damaged font");
    refuse(settings.size_place, "this file is a finished font; leave size out");
    refuse(settings.codes_place, "this file is a finished font; leave range and chars out");
    return file;
}

Bytes build_font(FontSettings& settings) {
    Bytes file = read_named(settings.file);
    if (file.size() > font_magic.size() && has_font_magic(file))
        return finished_font(settings, std::move(file));
    if (!settings.codes_place)
        for (int code = first_default; code <= last_default; ++code)
            settings.wanted.set(static_cast<std::size_t>(code));
    Font font = drawn_font(settings, file);
    check_needed(settings, font);
    if (settings.trim) trim_rows(font);
    if (settings.spacing > 0) widen(font, settings.spacing);
    if (settings.gap >= 0) font.gap = settings.gap;
    if (settings.width > 0) font.cell_width = settings.width;
    if (settings.format >= 0) font.format = settings.format;
    std::string fault;
    Bytes bytes = font_bytes(font, fault);
    if (!fault.empty()) fail_file(settings.file, fault);
    return bytes;
}

// Pictures.

struct Box {
    int x, y, width, height;
};

struct PictureSettings {
    NamedFile file, second;
    std::optional<Box> part, second_part;
    Scanner part_place, second_part_place;
    int threshold;  // percent
    bool dither, invert;
};

constexpr std::string_view picture_keys =
    "file, part, second, second_part, threshold, dither, invert, at or same";

Box take_box(Scanner& scanner, const Names& names) {
    constexpr int max = max_picture_dots;
    Box box{};
    box.x = take_sum(scanner, names, Kind::number, "x", 0, max);
    expect_char(scanner, ',');
    box.y = take_sum(scanner, names, Kind::number, "y", 0, max);
    expect_char(scanner, ',');
    box.width = take_sum(scanner, names, Kind::number, "width", 1, max_picture_width);
    expect_char(scanner, ',');
    box.height = take_sum(scanner, names, Kind::number, "height", 1, max_picture_height);
    return box;
}

void take_picture_setting(Setting& setting, const Names& names, PictureSettings& picture) {
    Scanner& value = setting.value;
    if (setting.key == "file") {
        picture.file = take_file(setting);
    } else if (setting.key == "second") {
        picture.second = take_file(setting);
    } else if (setting.key == "part") {
        picture.part_place = value;
        picture.part = take_box(value, names);
    } else if (setting.key == "second_part") {
        picture.second_part_place = value;
        picture.second_part = take_box(value, names);
    } else if (setting.key == "threshold") {
        picture.threshold = take_sum(value, names, Kind::number, setting.key, 0, 100);
    } else if (setting.key == "dither") {
        picture.dither = take_yes(value);
    } else if (setting.key == "invert") {
        picture.invert = take_yes(value);
    } else {
        fail_key(setting, picture_keys);
    }
}

GrayPicture cut_out(const GrayPicture& whole, const Box& box) {
    GrayPicture part{box.width, box.height, {}};
    for (int y = 0; y < box.height; ++y) {
        const auto row = whole.light.begin() + std::ptrdiff_t{box.y + y} * whole.width + box.x;
        part.light.insert(part.light.end(), row, row + box.width);
    }
    return part;
}

Dots read_dots(const PictureSettings& settings, const NamedFile& file,
               const std::optional<Box>& part, const Scanner& part_place) {
    GrayPicture picture;
    const std::string fault = decode_picture(read_named(file), picture);
    if (!fault.empty()) fail_file(file, fault);
    if (part && (part->x + part->width > picture.width || part->y + part->height > picture.height))
        fail(part_place, "the part reaches out of the picture, which is " +
                             std::to_string(picture.width) + " x " +
                             std::to_string(picture.height) + " dots");
    if (part) picture = cut_out(picture, *part);
    if (picture.width > max_picture_width || picture.height > max_picture_height)
        fail_file(file, "is " + std::to_string(picture.width) + " x " +
                            std::to_string(picture.height) + " dots; at most " +
                            std::to_string(max_picture_width) + " x " +
                            std::to_string(max_picture_height) + " fit, take a part");
    if (settings.invert)
        for (std::uint8_t& light : picture.light)
            light = low8(255 - light);
    return settings.dither ? by_dither(picture) : by_threshold(picture, settings.threshold);
}

Bytes build_picture(const PictureSettings& settings) {
    const Dots first = read_dots(settings, settings.file, settings.part, settings.part_place);
    if (!settings.second.given && !settings.second_part) return picture_bytes(first, nullptr);
    const NamedFile& file = settings.second.given ? settings.second : settings.file;
    const Dots second = read_dots(settings, file, settings.second_part, settings.second_part_place);
    if (first.width != second.width || first.height != second.height)
        fail_file(file, "differs in size from the first image");
    if (first.height > max_height_of_two)
        fail_file(file, "has " + std::to_string(first.height) + " rows; two images have at most " +
                            std::to_string(max_height_of_two) + " each");
    return picture_bytes(first, &second);
}

/// Settings first, then the files, so that a wrong setting is reported in any case.
template <typename Settings, typename Take, typename Build>
Bytes build_resource(const Section& section, bool shared, Settings& settings, Faults& faults,
                     Take take, Build build) {
    for_settings(section.lines, faults, take);
    if (!faults.empty()) return {};
    try {
        if (shared && settings.file.given) fail(settings.file.place, "a file beside same");
        if (shared) return {};
        if (!settings.file.given) throw Fault(section.place, "expected file = NAME below");
        return build();
    } catch (const Fault& fault) {
        faults.push_back(fault);
        return {};
    }
}

}  // namespace

Bytes font_of_section(const Section& section, bool shared, const Names& names,
                      std::vector<std::string>& inputs, Faults& faults) {
    FontSettings settings{};
    settings.gap = settings.format = -1;
    return build_resource(
        section, shared, settings, faults,
        [&](Setting& setting) { take_font_setting(setting, names, settings); },
        [&] {
            inputs.push_back(settings.file.path);
            return build_font(settings);
        });
}

Bytes picture_of_section(const Section& section, bool shared, const Names& names,
                         std::vector<std::string>& inputs, Faults& faults) {
    PictureSettings settings{};
    settings.threshold = 50;
    return build_resource(
        section, shared, settings, faults,
        [&](Setting& setting) { take_picture_setting(setting, names, settings); },
        [&] {
            inputs.push_back(settings.file.path);
            if (settings.second.given) inputs.push_back(settings.second.path);
            return build_picture(settings);
        });
}

}  // namespace orvanel
