#include "host/reading/drawing.h"

#include "base/bytes.h"
#include "firmware/core/language/eeprom_layout.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/blit.h"
#include "firmware/raster/planes.h"
#include "firmware/text/layout.h"

#include <memory>

namespace orvanel {

namespace {

/// What drawing a glyph writes, put back at the end of its life. The module may stand still in the
/// middle of a picture from the line, so its buffer is among it.
struct KeptDrawing {
    DrawArea area = draw_area;
    std::int32_t width = picture_width, cut_width = blit_width;
    std::uint8_t height = picture_height, cut_height = blit_height;
    std::uint8_t zoom_x = blit_zoom_x, zoom_y = blit_zoom_y;
    std::uint8_t link = blit_link, flash_link = blit_flash_link, attr = flash_attr;
    std::uint8_t* plane = work_plane;
    bool both = both_planes;
    decltype(staging_buffer) staged = staging_buffer;

    KeptDrawing() = default;
    KeptDrawing(const KeptDrawing&) = delete;
    KeptDrawing& operator=(const KeptDrawing&) = delete;
    ~KeptDrawing() {
        draw_area = area;
        picture_width = width, blit_width = cut_width;
        picture_height = height, blit_height = cut_height;
        blit_zoom_x = zoom_x, blit_zoom_y = zoom_y;
        blit_link = link, blit_flash_link = flash_link, flash_attr = attr;
        work_plane = plane;
        both_planes = both;
        staging_buffer = staged;
    }
};

}  // namespace

std::vector<FontRef> module_fonts() {
    std::vector<FontRef> fonts;
    for (int n = 0; n <= table_of(Kind::font).max; ++n)
        if (FontRef font{}; find_font(low8(n), font) && font.height > 0) fonts.push_back(font);
    return fonts;
}

int glyph_width(const FontRef& font, std::uint8_t code) {
    return code < font.first || code > font.last ? 0 : glyph_entry(font, code).width;
}

bool glyph_dot(const FontRef& font, std::uint8_t code, int column, int row) {
    const GlyphEntry entry = glyph_entry(font, code);
    const auto at = static_cast<std::size_t>(row * stride_of(entry.width) + column / 8);
    return (glyph_rows(font, entry)[at] & dot_mask(column)) != 0;
}

DrawnText draw_text(const FontRef& font, const TextLook& look,
                    std::span<const std::uint8_t> codes) {
    int length = 0;
    for (const std::uint8_t code : codes)
        length += glyph_width(font, code) * look.zoom_x;
    const int across = font.height * look.zoom_y;
    const bool turned = look.rotation == 1;
    DrawnText drawn{{}, turned ? across : length, turned ? length : across};
    if (drawn.width > screen_width || drawn.height > screen_height) return {};

    const KeptDrawing kept;
    BitPlane plane{};
    work_plane = plane.data();
    both_planes = false;
    flash_attr = flash_none;
    const TextStyle style{look.zoom_x, look.zoom_y, link_replace, 0, look.rotation};
    int at = turned ? length : 0;
    for (const std::uint8_t code : codes) {
        const int advance = glyph_width(font, code) * look.zoom_x;
        if (turned) at -= advance;
        draw_area.x1 = turned ? 0 : at;
        draw_area.y1 = static_cast<std::uint8_t>(turned ? at : 0);
        draw_glyph(code, font, style);
        if (!turned) at += advance;
    }
    drawn.rows = rows_of(plane);
    return drawn;
}

}  // namespace orvanel
