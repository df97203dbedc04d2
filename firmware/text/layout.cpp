#include "firmware/text/layout.h"

#include "base/bytes.h"
#include "firmware/core/ground/draw_area.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace orvanel {

constinit TextStyle string_style{};
constinit TextStyle touch_style{};
constinit TextStyle menu_style{};
constinit TextStyle terminal_style{};
constinit std::uint8_t string_flash = 0;

constinit const FontRef* active_font = nullptr;
constinit const TextStyle* active_style = nullptr;

constinit std::uint8_t line_count = 0;
constinit std::int32_t max_width = 0;
constinit std::int32_t total_height = 0;
constinit std::span<const std::uint8_t> run_cursor{};

namespace {

constexpr std::uint8_t line_break = '|';
constexpr std::uint8_t blank_switch = '~';
constexpr std::uint8_t inverse_switch = '@';
constexpr std::uint8_t escape = '\\';

// What the module's own buffer holds. The runs lie in tables here, but where scanning stops is
// counted in its bytes.
constexpr int run_buffer_bytes = 767;
constexpr int run_header_bytes = 3;
constexpr int run_entry_bytes = 2;

/// A character of a line. Width 0 with code flash_blank or flash_inverse is a flash switch.
struct RunEntry {
    std::uint8_t width;  // dots before zoom
    std::uint8_t code;
};

struct LineRun {
    std::uint16_t count;  // entries
    std::uint16_t width;  // dots before zoom; a sum beyond 16 bits wraps
};

constexpr std::size_t max_entries =
    (run_buffer_bytes - run_header_bytes + run_entry_bytes - 1) / run_entry_bytes;
constexpr std::size_t max_lines = run_buffer_bytes / run_header_bytes;
static_assert(max_entries == 382 && max_lines == 255);

constinit std::array<RunEntry, max_entries> run_buffer{};  // of all lines, one after the other
constinit std::array<LineRun, max_lines> line_runs{};

/// A line being scanned.
struct OpenLine {
    std::size_t first;  // its place in run_buffer
    std::size_t end;    // after its last entry
    int width;          // dots before zoom
};

std::uint8_t next_byte(StringSource source) {
    if (source == StringSource::stream) return read_byte();
    if (run_cursor.empty()) return 0;
    const std::uint8_t b = run_cursor.front();
    run_cursor = run_cursor.subspan(1);
    return b;
}

void append(OpenLine& line, RunEntry entry) {
    run_buffer[line.end++] = entry;
    line.width += entry.width;
}

void append_character(OpenLine& line, std::uint8_t code) {
    if (code < active_font->first || code > active_font->last)
        return remark(Remark::missing_glyph, code);
    append(line, {glyph_entry(*active_font, code).width, code});
}

void close_line(OpenLine& line) {
    line_runs[line_count++] = {static_cast<std::uint16_t>(line.end - line.first),
                               static_cast<std::uint16_t>(line.width)};
    max_width = std::max(max_width, line.width);
    line = {line.end, line.end, 0};
}

bool buffer_full(const OpenLine& line) {
    return run_header_bytes * (line_count + 1) + run_entry_bytes * static_cast<int>(line.end) >=
           run_buffer_bytes;
}

/// A place on the way of the text. It can lie one dot off the glass before a glyph takes it.
struct Point {
    int x, y;
};

/// Dots of a line of `length` dots before its anchor.
int before_anchor(int length, std::uint8_t align) {
    if (align == 'C') return length / 2 - 1;
    return align == 'R' ? length - 1 : 0;
}

/// Where a line of `length` dots starts that is aligned to `anchor`, kept on the glass on the side
/// that it grows to. One centred dot starts one dot beyond its anchor, maybe off the glass.
Point aligned(Point anchor, int length, std::uint8_t align) {
    const int before = before_anchor(length, align);
    switch (active_style->rotation) {
    case 0:
        anchor.x = std::max(anchor.x - before, 0);
        break;
    case 1:
        anchor.y = std::min(anchor.y + before, last_y);
        break;
    case 2:
        anchor.x = std::min(anchor.x + before, last_x);
        break;
    default:
        anchor.y = std::max(anchor.y - before, 0);
        break;
    }
    return anchor;
}

/// The rectangle of the text block that starts at `start`, beyond the glass too.
Block block_at(Point start) {
    auto [x1, y1] = start;
    auto [x2, y2] = start;
    const int along = max_width - 1;
    const int across = total_height - 1;
    switch (active_style->rotation) {
    case 0:
        x2 += along, y2 += across;
        break;
    case 1:
        y1 -= along, x2 += across;
        break;
    case 2:
        x1 -= along, y1 -= across;
        break;
    default:
        x1 -= across, y2 += along;
        break;
    }
    return {x1, y1, x2, y2};
}

/// Makes the block the dirty area, cut to the glass. False if nothing of it is there.
bool mark_dirty(const Block& block) {
    const int x1 = std::max(block.x1, 0);
    const int y1 = std::max(block.y1, 0);
    const int x2 = std::min(block.x2, last_x);
    const int y2 = std::min(block.y2, last_y);
    if (x1 > x2 || y1 > y2) return false;
    dirty_area = {x1, low8(y1), x2, low8(y2)};
    return true;
}

/// How far a line had to be moved to stay on the glass.
int moved(Point anchor, Point start, int before) {
    const int kept = active_style->rotation % 2 == 0 ? start.x - anchor.x : start.y - anchor.y;
    return std::max(before - std::abs(kept), 0);
}

void toggle_flash(std::uint8_t attr) {
    if (attr != flash_blank && attr != flash_inverse) return;
    flash_attr = flash_attr == attr ? flash_none : attr;
}

void draw_glyph_at(Point corner, std::uint8_t code) {
    draw_area.x1 = corner.x;
    draw_area.y1 = low8(corner.y);
    draw_glyph(code, *active_font, *active_style);
}

/// Draws one line. Text that turns toward smaller coordinates places each glyph by its far edge,
/// so it starts from the dot after it and steps before it draws. The line ends at the first glyph
/// that starts outside the glass; flash switches after it are not seen.
void draw_run(Point at, std::uint8_t align, const LineRun& run, std::span<const RunEntry> entries) {
    at = aligned(at, run.width * active_style->zoom_x, align);
    const std::uint8_t rotation = active_style->rotation;
    if (rotation == 1) ++at.y;
    if (rotation == 2) ++at.x;
    for (const auto [width, code] : entries) {
        // Up to 1020: an advance of 256 and more leaves the glass from wherever it starts.
        const int advance = width * active_style->zoom_x;
        if (advance == 0) {
            toggle_flash(code);
            continue;
        }
        if (rotation == 1) at.y -= advance;
        if (rotation == 2) at.x -= advance;
        if (at.x < 0 || at.y < 0) return;
        draw_glyph_at(at, code);
        if (rotation == 0) at.x += advance;
        if (rotation == 3) at.y += advance;
        if (at.x > last_x || at.y > last_y) return;
    }
}

void string_command(std::uint8_t align) {
    active_font = &string_font;
    active_style = &string_style;
    layout_string(StringSource::stream, false);
    draw_string(align);
}

}  // namespace

std::uint8_t layout_string(StringSource source, bool check_align) {
    line_count = 0;
    max_width = 0;
    std::uint8_t first_character = 0;
    OpenLine line{};
    // A full buffer leaves the open line unclosed and the rest of the string with its source.
    bool ended = false;
    while (!ended && !buffer_full(line)) {
        std::uint8_t b = next_byte(source);
        const bool escaped = b == escape;
        if (escaped) b = next_byte(source);
        ended = ends_text(b);
        if (ended || (b == line_break && !escaped)) {
            close_line(line);
        } else if (b == blank_switch && !escaped) {
            append(line, {0, flash_blank});
        } else if (b == inverse_switch && !escaped) {
            append(line, {0, flash_inverse});
        } else if (check_align) {
            check_align = false;
            first_character = b;
            if (b != 'L' && b != 'C' && b != 'R') append_character(line, b);
        } else {
            append_character(line, b);
        }
    }
    if (!ended) remark(Remark::text_cut);
    max_width *= active_style->zoom_x;
    total_height = line_count * active_font->height * active_style->zoom_y;
    if (line_count != 0) total_height += (line_count - 1) * active_font->line_gap;
    return first_character;
}

std::size_t layout_text(std::span<std::uint8_t> into) {
    std::size_t length = 0;
    const auto put = [&](std::uint8_t byte) {
        if (length < into.size()) into[length++] = byte;
    };
    std::span<const RunEntry> entries = run_buffer;
    for (std::size_t i = 0; i < line_count; ++i) {
        if (i > 0) put('\n');
        for (const RunEntry entry : entries.first(line_runs[i].count))
            if (entry.width > 0) put(entry.code);
        entries = entries.subspan(line_runs[i].count);
    }
    return length;
}

void draw_string(std::uint8_t align) {
    if (max_width == 0 || active_font->height == 0) return;
    flash_attr = string_flash;
    both_planes = true;
    const Point anchor{draw_area.x1, draw_area.y1};
    const Point start = aligned(anchor, max_width, align);
    const Block block = block_at(start);
    if (tracing()) [[unlikely]]
        tell_block(block, moved(anchor, start, before_anchor(max_width, align)));
    if (!mark_dirty(block)) return;

    const std::uint8_t rotation = active_style->rotation;
    const int height = active_font->height * active_style->zoom_y;
    const int pitch = height + active_font->line_gap;  // the gap is not zoomed
    Point at = anchor;
    if (rotation == 2) ++at.y;
    if (rotation == 3) ++at.x;
    std::span<const RunEntry> entries = run_buffer;
    for (std::size_t i = 0; i < line_count; ++i) {
        const int back = i == 0 ? height : pitch;
        if (rotation == 2) at.y -= back;
        if (rotation == 3) at.x -= back;
        if (at.x < 0 || at.y < 0) break;
        const LineRun& run = line_runs[i];
        draw_run(at, align, run, entries.first(run.count));
        entries = entries.subspan(run.count);
        if (rotation == 0) at.y += pitch;
        if (rotation == 1) at.x += pitch;
        if (at.x > last_x || at.y > last_y) break;
    }
    refresh_dirty();
}

void draw_unflashed_string(std::uint8_t align) {
    const std::uint8_t held = string_flash;
    string_flash = flash_none;
    draw_string(align);
    string_flash = held;
}

void draw_glyph(std::uint8_t code, const FontRef& font, const TextStyle& style) {
    draw_area.x2 = draw_area.x1;
    draw_area.y2 = draw_area.y1;
    if (code < font.first || code > font.last) return;
    const GlyphEntry entry = glyph_entry(font, code);
    if (entry.width == 0 || font.height == 0) return;
    // The one centred dot at the right or lower edge comes here with its corner off the glass.
    if (draw_area.x1 < 0 || draw_area.x1 > last_x || draw_area.y1 > last_y) return;

    picture_width = entry.width;
    picture_height = font.height;
    std::span<const std::uint8_t> rows = glyph_rows(font, entry);
    if (style.rotation != 0) {
        stage_picture(rows, style.rotation);
        rows = staging_buffer;
    }
    const bool upright = style.rotation % 2 == 0;
    blit_zoom_x = upright ? style.zoom_x : style.zoom_y;
    blit_zoom_y = upright ? style.zoom_y : style.zoom_x;
    blit_link = style.link;
    prepare_blit();
    blit(rows);
}

void power_on_styles() {
    terminal_style = {1, 1, link_replace, 0, 0};
    string_style = {1, 1, link_replace, 0, 0};
    string_flash = flash_none;
    menu_style = {1, 1, link_replace, 0, 0};
    touch_style = {1, 1, link_invert, 0, 0};
}

void string_left() { string_command('L'); }
void string_centre() { string_command('C'); }
void string_right() { string_command('R'); }

void set_string_zoom() {
    string_style.zoom_x = params[0];
    string_style.zoom_y = params[1];
}

void set_string_link() { string_style.link = masked(params[0], 7); }
void set_string_rotation() { string_style.rotation = masked(params[0], 1); }

void set_string_flash() {
    const std::uint8_t attr = masked(params[0], 3);
    string_flash = attr == 3 ? flash_none : attr;
}

}  // namespace orvanel
