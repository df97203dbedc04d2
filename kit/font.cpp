#include "kit/font.h"

#include "base/bytes.h"

#include <algorithm>
#include <cstddef>

namespace orvanel {

namespace {

void append_pair(Bytes& bytes, std::size_t number) {
    const auto value = static_cast<std::int64_t>(number);
    bytes.push_back(low8(value));
    bytes.push_back(low8(value >> 8));
}

bool row_is_clear(const Font& font, int y) {
    return std::all_of(font.glyphs.begin(), font.glyphs.end(), [y](const auto& entry) {
        const Dots& glyph = entry.second;
        const auto row = glyph.rows.begin() + y * stride_of(glyph.width);
        return std::all_of(row, row + stride_of(glyph.width),
                           [](std::uint8_t byte) { return byte == 0; });
    });
}

int widest_of(const Font& font) {
    int widest = 0;
    for (const auto& [code, glyph] : font.glyphs)
        widest = std::max(widest, glyph.width);
    return widest;
}

std::string fault_of(const Font& font) {
    if (font.glyphs.empty()) return "has none of the characters that are wanted";
    if (font.height < 1 || font.height > max_font_height)
        return "has glyphs of " + std::to_string(font.height) + " rows; 1 to " +
               std::to_string(max_font_height) + " are possible";
    if (const int widest = widest_of(font); widest > max_glyph_width)
        return "has a glyph " + std::to_string(widest) + " dots wide; " +
               std::to_string(max_glyph_width) + " are possible";
    return {};
}

std::uint16_t pair_at(std::span<const std::uint8_t> bytes, std::size_t at) {
    return le16(bytes[at], bytes[at + 1]);
}

}  // namespace

Font font_of(const std::map<int, DrawnGlyph>& drawn, int ascent, int descent) {
    for (const auto& [code, glyph] : drawn) {
        ascent = std::max(ascent, glyph.top);
        descent = std::max(descent, glyph.dots.height - glyph.top);
    }
    Font font{ascent + descent, ascent, 0, 0, 1, {}};
    for (const auto& [code, glyph] : drawn) {
        const int left = std::min(0, glyph.left);
        const int right = std::max(glyph.advance, glyph.left + glyph.dots.width);
        if (right <= left) continue;
        Dots cell = blank_dots(right - left, font.height);
        for (int y = 0; y < glyph.dots.height; ++y)
            for (int x = 0; x < glyph.dots.width; ++x)
                if (dot_at(glyph.dots, x, y))
                    set_dot(cell, x + glyph.left - left, y + ascent - glyph.top);
        font.glyphs.emplace(code, std::move(cell));
    }
    return font;
}

void trim_rows(Font& font) {
    int top = 0, bottom = font.height;
    while (top < bottom - 1 && row_is_clear(font, top))
        ++top;
    while (bottom > top + 1 && row_is_clear(font, bottom - 1))
        --bottom;
    for (auto& [code, glyph] : font.glyphs) {
        const int stride = stride_of(glyph.width);
        glyph.rows = Bytes(glyph.rows.begin() + top * stride, glyph.rows.begin() + bottom * stride);
        glyph.height = bottom - top;
    }
    font.height = bottom - top;
    font.ascent -= top;
}

void widen(Font& font, int columns) {
    for (auto& [code, glyph] : font.glyphs) {
        Dots wider = blank_dots(glyph.width + columns, glyph.height);
        for (int y = 0; y < glyph.height; ++y)
            for (int x = 0; x < glyph.width; ++x)
                if (dot_at(glyph, x, y)) set_dot(wider, x, y);
        glyph = std::move(wider);
    }
}

Bytes font_bytes(const Font& font, std::string& fault) {
    fault = fault_of(font);
    if (!fault.empty()) return {};
    const int first = font.glyphs.begin()->first, last = font.glyphs.rbegin()->first;
    const int cell = font.cell_width > 0 ? font.cell_width : widest_of(font);
    const std::size_t glyphs_at =
        font_head_size + glyph_entry_size * static_cast<std::size_t>(last - first + 1);
    Bytes bytes(font_magic.begin(), font_magic.end());
    for (const int value : {font.format, first, last, cell, font.height})
        bytes.push_back(low8(value));
    append_pair(bytes, glyphs_at);
    bytes.push_back(low8(font.gap));
    bytes.resize(font_head_size);
    Bytes bits;
    for (int code = first; code <= last; ++code) {
        const auto found = font.glyphs.find(code);
        const Dots none = blank_dots(0, font.height);
        const Dots& glyph = found == font.glyphs.end() ? none : found->second;
        bytes.push_back(low8(glyph.width));
        append_pair(bytes, glyph.width == 0 ? 0 : bits.size());
        bits.insert(bits.end(), glyph.rows.begin(), glyph.rows.end());
        if (bits.size() > max_glyph_offset) {
            fault = "takes more than 65535 bytes; take fewer characters or a smaller size";
            return {};
        }
    }
    bytes.insert(bytes.end(), bits.begin(), bits.end());
    return bytes;
}

bool read_font_head(std::span<const std::uint8_t> bytes, FontHead& head) {
    if (bytes.size() < font_head_size || !has_font_magic(bytes)) return false;
    head = {bytes[font_first_at],
            bytes[font_last_at],
            bytes[font_width_at],
            bytes[font_height_at],
            bytes[font_gap_at],
            bytes[font_format_at],
            pair_at(bytes, font_glyphs_at),
            0,
            0};
    const int entries = std::max(0, head.last - head.first + 1);
    head.size = font_head_size + glyph_entry_size * static_cast<std::size_t>(entries);
    if (head.size > bytes.size()) return false;
    for (std::size_t at = font_head_size;
         at < font_head_size + glyph_entry_size * static_cast<std::size_t>(entries);
         at += glyph_entry_size) {
        if (bytes[at] == 0) continue;
        ++head.glyph_count;
        const auto rows = static_cast<std::size_t>(stride_of(bytes[at]) * head.height);
        head.size = std::max(head.size, head.glyphs_at + pair_at(bytes, at + 1) + rows);
    }
    return true;
}

bool read_font_bytes(std::span<const std::uint8_t> bytes, Font& font, std::size_t& size) {
    FontHead head{};
    if (!read_font_head(bytes, head) || head.size > bytes.size()) return false;
    font = {head.height, head.height, head.cell_width, head.gap, head.format, {}};
    for (int code = head.first; code <= head.last; ++code) {
        const std::size_t at =
            font_head_size + glyph_entry_size * static_cast<std::size_t>(code - head.first);
        if (bytes[at] == 0) continue;
        Dots glyph = blank_dots(bytes[at], head.height);
        const std::size_t start = head.glyphs_at + pair_at(bytes, at + 1);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(start), glyph.rows.size(),
                    glyph.rows.begin());
        if (!is_clean(glyph)) return false;
        font.glyphs.emplace(code, std::move(glyph));
    }
    size = head.size;
    std::string fault;
    const Bytes again = font_bytes(font, fault);
    return again.size() == size && std::equal(again.begin(), again.end(), bytes.begin());
}

}  // namespace orvanel
