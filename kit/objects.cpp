#include "kit/objects.h"

#include "kit/commands.h"
#include "kit/font.h"

#include <algorithm>
#include <array>

namespace orvanel {

namespace {

constexpr std::array object_kinds{Kind::font,   Kind::picture, Kind::power_on,
                                  Kind::normal, Kind::touch,   Kind::menu};

std::string dots_text(int width, int height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

std::string padded(std::string text, std::size_t width) {
    text.resize(std::max(width, text.size()), ' ');
    return text;
}

/// The rest of the image from the object on.
std::span<const std::uint8_t> rest_at(std::span<const std::uint8_t> image, int offset) {
    return image.subspan(std::min(static_cast<std::size_t>(offset), image.size()));
}

void measure_font(std::span<const std::uint8_t> image, Object& object) {
    FontHead head{};
    if (!read_font_head(rest_at(image, object.offset), head))
        object.fault = "there is no font at " + hex4(object.offset);
    else if (head.last < head.first)
        object.fault = "its last code is below its first";
    object.size = static_cast<int>(head.size);
}

void measure_picture(std::span<const std::uint8_t> image, Object& object) {
    const auto bytes = rest_at(image, object.offset);
    object.size = picture_head_size;
    if (bytes.size() < picture_head_size) return;  // reported as lying beyond the image
    const int rows = picture_rows(bytes[1]);
    object.size = picture_head_size + stride_of(bytes[0]) * rows;
    if (bytes[0] == 0 || rows == 0)
        object.fault = "it has " + dots_text(bytes[0], rows) + " dots";
    else if (has_two_images(bytes[1]) && rows % 2 != 0)
        object.fault = "its two images share " + std::to_string(rows) + " rows, an odd number";
}

/// False if the entry is empty.
bool read_entry(std::span<const std::uint8_t> image, Kind kind, int number, Object& object) {
    const int entry = entry_at(kind, number);
    object = {kind, number, pair_at(image, entry), 0, {}};
    if (!is_macro(kind)) return object.offset != no_entry;
    object.size = pair_at(image, entry + 2);
    return is_macro_length(object.size);
}

void check_place(std::span<const std::uint8_t> image, Object& object) {
    if (object.offset < data_start)
        object.fault = "it lies in the tables, at " + hex4(object.offset);
    else if (object.offset + object.size > std::ssize(image) || object.offset >= std::ssize(image))
        object.fault = "it ends beyond the image, at " + hex4(object.offset + object.size);
}

}  // namespace

std::vector<Object> objects_of(std::span<const std::uint8_t> image) {
    std::vector<Object> objects;
    for (const Kind kind : object_kinds)
        for (int number = table_of(kind).min; number <= table_of(kind).max; ++number) {
            Object object{};
            if (!read_entry(image, kind, number, object)) continue;
            if (kind == Kind::font) measure_font(image, object);
            if (kind == Kind::picture) measure_picture(image, object);
            if (object.fault.empty()) check_place(image, object);
            objects.push_back(std::move(object));
        }
    return objects;
}

std::span<const std::uint8_t> bytes_of(std::span<const std::uint8_t> image, const Object& object) {
    const auto rest = rest_at(image, object.offset);
    return rest.first(std::min(rest.size(), static_cast<std::size_t>(object.size)));
}

std::string title_of(const Object& object) {
    return std::string(kind_name(object.kind)) + " " + std::to_string(object.number);
}

std::string shape_of(std::span<const std::uint8_t> image, const Object& object) {
    if (!object.fault.empty()) return "unusable: " + object.fault;
    const auto bytes = bytes_of(image, object);
    if (object.kind == Kind::font) {
        FontHead head{};
        read_font_head(bytes, head);
        return std::to_string(head.glyph_count) + " characters, codes " +
               std::to_string(head.first) + " to " + std::to_string(head.last) + ", cell " +
               dots_text(head.cell_width, head.height) + ", gap " + std::to_string(head.gap);
    }
    if (object.kind == Kind::picture) {
        if (!has_two_images(bytes[1])) return dots_text(bytes[0], bytes[1]);
        return "two images of " + dots_text(bytes[0], picture_rows(bytes[1]) / 2);
    }
    return {};
}

std::string summary_of(std::span<const std::uint8_t> image) {
    const std::string size = std::to_string(image.size()) + " bytes, ";
    const int length = pair_at(image, image_length_at);
    if (length == unprogrammed) return size + "not programmed";
    const std::string covered = size + "length " + hex4(length);
    if (length + crc_size > std::ssize(image)) return covered + ", more than the memory holds";
    const int stored = pair_at(image, length);
    const int computed = crc_of(image.first(static_cast<std::size_t>(length)));
    return covered + ", CRC " + hex4(stored) +
           (stored == computed ? "" : ", which should be " + hex4(computed));
}

std::string doubt_about(std::span<const std::uint8_t> image) {
    constexpr std::ptrdiff_t many = 8;  // unusable objects: fewer are a fault of whoever made it
    const int length = pair_at(image, 0);
    const bool whole =
        length + 2 <= std::ssize(image) &&
        pair_at(image, length) == crc_of(image.first(static_cast<std::size_t>(length)));
    const std::vector<Object> objects = objects_of(image);
    const auto unusable = [](const Object& object) { return !object.fault.empty(); };
    const auto font = [&](const Object& object) {
        return object.kind == Kind::font && !unusable(object);
    };
    const auto count = std::ranges::count_if(objects, unusable);
    if (whole || count < many || std::ranges::any_of(objects, font)) return {};
    return "this is hardly an EEPROM image: its CRC is wrong, there is no font in it, and " +
           std::to_string(count) + " of " + std::to_string(objects.size()) +
           " entries of its tables are unusable; Orvanel42.bin is one, and what build and "
           "--save-image write";
}

std::string listing_of(std::span<const std::uint8_t> image) {
    std::string text = summary_of(image) + "\n";
    for (const Object& object : objects_of(image)) {
        std::string line = padded(title_of(object), 18) + hex4(object.offset) + "  " +
                           padded(std::to_string(object.size) + " bytes", 13) +
                           shape_of(image, object);
        line.resize(line.find_last_not_of(' ') + 1);
        text += line + "\n";
        if (!is_macro(object.kind) || !object.fault.empty()) continue;
        for (const std::string& command : lines_from(bytes_of(image, object)))
            text += "    " + command + "\n";
    }
    return text;
}

}  // namespace orvanel
