#include "kit/outline.h"

#include "kit/code_page.h"

#include <freetype/freetype.h>
#include <freetype/ftmodapi.h>
#include <freetype/ftoutln.h>
#include <memory>

namespace orvanel {

namespace {

struct CloseLibrary {
    void operator()(FT_Library library) const { FT_Done_FreeType(library); }
};
struct CloseFace {
    void operator()(FT_Face face) const { FT_Done_Face(face); }
};
using Library = std::unique_ptr<FT_LibraryRec_, CloseLibrary>;
using Face = std::unique_ptr<FT_FaceRec_, CloseFace>;

/// The library, deaf to the environment: the same file gives the same dots for every user.
Library open_library() {
    FT_Library opened = nullptr;
    if (FT_Init_FreeType(&opened) != 0) return nullptr;
    FT_UInt truetype = 35;  // hints act in both directions, as dots without grays need it
    FT_Property_Set(opened, "truetype", "interpreter-version", &truetype);
    FT_Bool plain = 1;
    FT_Property_Set(opened, "cff", "no-stem-darkening", &plain);
    return Library(opened);
}

constexpr int max_cell = 512;  // dots a side, and around the point

/// Dots of a length in 64ths, rounded.
int rounded(FT_Pos length) { return static_cast<int>((length + 32) >> 6); }

int rounded_up(FT_Pos length) { return static_cast<int>((length + 63) >> 6); }

/// Whether a cell for the glyph, whether an outline or already drawn, would be larger than any font
/// has it. Asked before drawing, which takes time and memory by the size.
bool is_too_large(const FT_GlyphSlotRec_& slot) {
    FT_BBox box{};  // 64ths; of the curves' control points, which the dots lie within
    if (slot.format == FT_GLYPH_FORMAT_OUTLINE) {
        FT_Outline_Get_CBox(&slot.outline, &box);
    } else {
        box.xMin = FT_Pos{slot.bitmap_left} * 64;
        box.yMax = FT_Pos{slot.bitmap_top} * 64;
        box.xMax = box.xMin + static_cast<FT_Pos>(slot.bitmap.width) * 64;
        box.yMin = box.yMax - static_cast<FT_Pos>(slot.bitmap.rows) * 64;
    }
    constexpr FT_Pos max = max_cell * 64;
    const auto beyond = [](FT_Pos length) { return length < -max || length > max; };
    return beyond(box.xMin) || beyond(box.xMax) || beyond(box.yMin) || beyond(box.yMax) ||
           beyond(slot.advance.x);
}

DrawnGlyph glyph_of(const FT_GlyphSlotRec_& slot) {
    const FT_Bitmap& bitmap = slot.bitmap;
    const int width = static_cast<int>(bitmap.width), height = static_cast<int>(bitmap.rows);
    DrawnGlyph glyph{rounded(slot.advance.x), slot.bitmap_left, slot.bitmap_top,
                     blank_dots(width, height)};
    for (int y = 0; y < height; ++y) {
        const unsigned char* row = bitmap.buffer + std::ptrdiff_t{y} * bitmap.pitch;
        for (int x = 0; x < width; ++x)
            if ((row[x / 8] >> (7 - x % 8) & 1) != 0) set_dot(glyph.dots, x, y);
    }
    return glyph;
}

}  // namespace

std::string read_outlines(std::span<const std::uint8_t> file, int size, const Codes& wanted,
                          Font& font) {
    const Library library = open_library();
    if (library == nullptr) return "can't be drawn: FreeType doesn't start";
    FT_Face opened = nullptr;
    if (FT_New_Memory_Face(library.get(), file.data(), static_cast<FT_Long>(file.size()), 0,
                           &opened) != 0)
        return "is neither a BDF nor a TrueType nor an OpenType font";
    const Face face(opened);
    if (FT_Select_Charmap(face.get(), FT_ENCODING_UNICODE) != 0)
        return "doesn't tell which glyph is which character";
    if (FT_Set_Pixel_Sizes(face.get(), 0, static_cast<FT_UInt>(size)) != 0)
        return "has no size of " + std::to_string(size) + " dots";
    const FT_Size_Metrics& metrics = face->size->metrics;
    const std::string size_text = "size = " + std::to_string(size);
    const std::string limit_text = std::to_string(max_cell) + " dots";
    if (metrics.ascender > max_cell * 64 || metrics.descender < -max_cell * 64)
        return "is too large: at " + size_text + " its lines reach over " + limit_text;
    std::map<int, DrawnGlyph> drawn;
    for (int code = ' '; code < code_count; ++code) {
        if (!wanted[static_cast<std::size_t>(code)]) continue;
        const FT_UInt index =
            FT_Get_Char_Index(face.get(), static_cast<FT_ULong>(character_of(code)));
        if (index == 0) continue;
        const std::string glyph = "its glyph for code " + std::to_string(code);
        if (FT_Load_Glyph(face.get(), index, FT_LOAD_TARGET_MONO) != 0)
            return "is damaged: " + glyph + " can't be read";
        if (is_too_large(*face->glyph))
            return "is too large: at " + size_text + " " + glyph + " reaches over " + limit_text;
        if (FT_Render_Glyph(face->glyph, FT_RENDER_MODE_MONO) != 0)
            return "is damaged: " + glyph + " can't be drawn";
        if (face->glyph->bitmap.pixel_mode != FT_PIXEL_MODE_MONO)
            return "has glyphs that are no outlines";
        drawn.emplace(code, glyph_of(*face->glyph));
    }
    font = font_of(drawn, rounded_up(metrics.ascender), rounded_up(-metrics.descender));
    return {};
}

}  // namespace orvanel
