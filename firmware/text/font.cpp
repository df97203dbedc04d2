#include "firmware/text/font.h"

#include "base/bytes.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/raster/blit.h"
#include "firmware/store/ground/eeprom.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace orvanel {

constinit FontRef string_font{};
constinit FontRef touch_font{};
constinit FontRef menu_font{};
constinit FontRef terminal_font{};

namespace {

// clang-format off
constexpr std::array builtin_font = std::to_array<std::uint8_t>({
#include "builtin_font.inc"
});
// clang-format on
static_assert(builtin_font.size() == 2096);

constexpr std::uint8_t power_on_font = 5;
constexpr std::uint8_t max_gap = 15;

constexpr std::size_t max_glyph = std::size_t{max_font_height} * stride_of(max_glyph_width);

/// The copy of a glyph that lies partly outside its font's memory.
constinit std::array<std::uint8_t, max_glyph> cut_glyph{};

/// The memory that a font lies in.
std::span<const std::uint8_t> font_memory(bool builtin) {
    if (builtin) return builtin_font;
    return std::span(eeprom_image).first(static_cast<std::size_t>(eeprom_size));
}

/// The byte at `at`, 0 or more; 0 outside.
std::uint8_t byte_at(std::span<const std::uint8_t> memory, std::int32_t at) {
    const auto index = static_cast<std::size_t>(at);
    return index < memory.size() ? memory[index] : std::uint8_t{0};
}

/// Makes `font` the one whose header lies at `start` of its memory, but for the number. False, and
/// nothing changed, if there is none.
bool take_header(bool builtin, std::int32_t start, FontRef& font) {
    const auto header = [memory = font_memory(builtin), start](std::int32_t i) {
        return byte_at(memory, start + i);
    };
    if (header(0) != font_magic[0] || header(1) != font_magic[1] || header(2) != font_magic[2])
        return false;
    font.first = header(font_first_at);
    font.last = header(font_last_at);
    font.width = header(font_width_at);
    font.height = header(font_height_at);
    font.line_gap = header(font_gap_at);
    font.builtin = builtin;
    font.width_table = start + font_head_size;
    font.glyphs = start + le16(header(font_glyphs_at), header(font_glyphs_at + 1));
    return true;
}

/// Forgets the number alone: when nothing can be selected, a reset leaves the font in use as it
/// is.
void reselect(std::uint8_t n, FontRef& font) {
    font.id = no_font;
    select_font(n, font);
}

std::uint8_t gap_param() { return masked(params[0], max_gap); }

}  // namespace

void select_font(std::uint8_t n, FontRef& font) {
    n = masked(n, low8(table_of(Kind::font).max));
    if (n == font.id) return;
    font.id = n;
    std::int32_t start = 0;
    if (n != 0) {
        // The table is read at the image cursor, which stays after the entry.
        eeprom_seek(static_cast<std::uint16_t>(entry_at(Kind::font, n)));
        start = eeprom_read16();
    }
    if (start == no_entry || !take_header(n == 0, start, font)) remark(Remark::missing_font, n);
}

bool find_font(std::uint8_t n, FontRef& font) {
    const int entry = entry_at(Kind::font, n);
    const std::int32_t start = n == 0 ? 0 : le16(eeprom_at(entry), eeprom_at(entry + 1));
    if (start == no_entry || !take_header(n == 0, start, font)) return false;
    font.id = n;
    return true;
}

GlyphEntry glyph_entry(const FontRef& font, std::uint8_t code) {
    const std::span<const std::uint8_t> memory = font_memory(font.builtin);
    const std::int32_t at = font.width_table + glyph_entry_size * (code - font.first);
    return {byte_at(memory, at), le16(byte_at(memory, at + 1), byte_at(memory, at + 2))};
}

std::span<const std::uint8_t> glyph_rows(const FontRef& font, GlyphEntry entry) {
    const std::span<const std::uint8_t> memory = font_memory(font.builtin);
    const std::size_t start = static_cast<std::size_t>(font.glyphs) + entry.offset;
    const std::size_t size =
        std::size_t{font.height} * static_cast<std::size_t>(stride_of(entry.width));
    if (start + size <= memory.size()) return memory.subspan(start, size);
    const auto inside = memory.subspan(std::min(start, memory.size()));
    std::copy(inside.begin(), inside.end(), cut_glyph.begin());
    std::fill_n(cut_glyph.begin() + std::ssize(inside), size - inside.size(), std::uint8_t{0});
    return std::span(cut_glyph).first(size);
}

void power_on_fonts() {
    reselect(0, terminal_font);
    reselect(power_on_font, string_font);
    reselect(power_on_font, menu_font);
    reselect(power_on_font, touch_font);
}

void cold_start_fonts() { string_font = touch_font = menu_font = terminal_font = {}; }

void select_string_font() { select_font(params[0], string_font); }
void select_touch_font() { select_font(params[0], touch_font); }
void select_menu_font() { select_font(params[0], menu_font); }
void set_string_gap() { string_font.line_gap = gap_param(); }
void set_touch_gap() { touch_font.line_gap = gap_param(); }
void set_menu_gap() { menu_font.line_gap = gap_param(); }

}  // namespace orvanel
