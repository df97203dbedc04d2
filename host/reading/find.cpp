#include "host/reading/find.h"

#include <algorithm>
#include <array>
#include <optional>

namespace orvanel {

namespace {

/// A dot of a text before zoom and rotation.
struct TextDot {
    int along, across;
    bool set;
};

/// The dots that tell a text from others soonest: set beside clear, from all over it.
struct Outline {
    int length;  // dots, before zoom
    bool shows;  // has a set dot
    std::vector<TextDot> dots;
};

constexpr std::size_t max_dots = 48;

/// Empty if the font lacks a character.
std::optional<Outline> outline_of(const FontRef& font, std::span<const std::uint8_t> codes) {
    Outline outline{};
    std::vector<TextDot> edges, others;
    for (const std::uint8_t code : codes) {
        const int width = glyph_width(font, code);
        if (width == 0) return std::nullopt;
        // A text longer than the glass stands nowhere.
        if (outline.length + width > screen_width) return std::nullopt;
        for (int row = 0; row < font.height; ++row) {
            bool before = false;
            for (int column = 0; column < width; ++column) {
                const bool set = glyph_dot(font, code, column, row);
                outline.shows = outline.shows || set;
                if (column > 0 && set != before) {
                    edges.push_back({outline.length + column, row, set});
                    edges.push_back({outline.length + column - 1, row, before});
                } else {
                    others.push_back({outline.length + column, row, set});
                }
                before = set;
            }
        }
        outline.length += width;
    }
    // From everywhere in turn: a prime step goes through all of them.
    constexpr std::size_t step = 7919;
    for (const std::vector<TextDot>* from : {&edges, &others})
        for (std::size_t i = 0; i < from->size() && outline.dots.size() < max_dots; ++i)
            outline.dots.push_back((*from)[i * step % from->size()]);
    return outline;
}

/// The places where a box of this size may have its upper left corner.
DotRows corners(const DrawArea& inside, int width, int height) {
    DotRows places{};
    const DotRow row = dots_from_to(inside.x1, inside.x2 - width + 1);
    for (int y = inside.y1; y + height - 1 <= inside.y2; ++y)
        places[static_cast<std::size_t>(y)] = row;
    return places;
}

/// Leaves those places where the dot at x, y of the box has the value. False if none is left.
bool keep_where(DotRows& places, const DotRows& glass, int x, int y, bool set) {
    const std::uint64_t flip = set ? 0 : ~std::uint64_t{0};
    std::uint64_t left = 0;
    for (std::size_t row = 0; row + static_cast<std::size_t>(y) < places.size(); ++row) {
        if (!has_dots(places[row])) continue;
        const DotRow seen = from_dot(glass[row + static_cast<std::size_t>(y)], x);
        for (std::size_t i = 0; i < seen.size(); ++i)
            left |= places[row][i] &= seen[i] ^ flip;
    }
    return left != 0;
}

bool stands_at(const DotRows& glass, const DrawnText& text, int x, int y, bool inverted) {
    const DotRow box = dots_from_to(0, text.width - 1);
    const std::uint64_t flip = inverted ? ~std::uint64_t{0} : 0;
    for (int row = 0; row < text.height; ++row) {
        const DotRow seen = from_dot(glass[static_cast<std::size_t>(y + row)], x);
        for (std::size_t i = 0; i < seen.size(); ++i)
            if ((((seen[i] ^ flip) ^ text.rows[static_cast<std::size_t>(row)][i]) & box[i]) != 0)
                return false;
    }
    return true;
}

/// The text in one look.
void find_look(const DotRows& glass, const FontRef& font, const TextLook& look,
               const Outline& outline, std::span<const std::uint8_t> codes, const DrawArea& inside,
               std::vector<TextPlace>& found) {
    const bool turned = look.rotation == 1;
    const int length = outline.length * look.zoom_x, across = font.height * look.zoom_y;
    const int width = turned ? across : length, height = turned ? length : across;
    if (width > inside.x2 - inside.x1 + 1 || height > inside.y2 - inside.y1 + 1) return;
    DotRows places = corners(inside, width, height);
    for (const TextDot& dot : outline.dots) {
        const int along = dot.along * look.zoom_x, down = dot.across * look.zoom_y;
        const int x = turned ? down : along, y = turned ? length - 1 - along : down;
        if (!keep_where(places, glass, x, y, dot.set != look.inverted)) return;
    }
    const DrawnText drawn = draw_text(font, look, codes);
    for (int y = 0; y < screen_height; ++y) {
        if (!has_dots(places[static_cast<std::size_t>(y)])) continue;
        for (int x = 0; x < screen_width; ++x)
            if (dot_at(places[static_cast<std::size_t>(y)], x) &&
                stands_at(glass, drawn, x, y, look.inverted))
                found.push_back({{x, static_cast<std::uint8_t>(y), x + width - 1,
                                  static_cast<std::uint8_t>(y + height - 1)},
                                 look});
    }
}

/// Where a cell of `width` dots before zoom lies that ends, or begins, `away` dots from the place.
std::optional<DrawArea> neighbour(const TextPlace& place, int width, int away, bool after) {
    const DrawArea& a = place.area;
    const int length = width * place.look.zoom_x;
    int x1 = a.x1, y1 = a.y1, x2 = a.x2, y2 = a.y2;
    if (place.look.rotation == 0) {
        x1 = after ? a.x2 + 1 + away : a.x1 - away - length;
        x2 = x1 + length - 1;
    } else {
        y1 = after ? a.y1 - away - length : a.y2 + 1 + away;
        y2 = y1 + length - 1;
    }
    if (x1 < 0 || y1 < 0 || x2 > last_x || y2 > last_y) return std::nullopt;
    return DrawArea{x1, static_cast<std::uint8_t>(y1), x2, static_cast<std::uint8_t>(y2)};
}

bool shows_dots(const FontRef& font, std::uint8_t code, int width) {
    for (int row = 0; row < font.height; ++row)
        for (int column = 0; column < width; ++column)
            if (glyph_dot(font, code, column, row)) return true;
    return false;
}

}  // namespace

std::vector<TextPlace> find_text(const DotRows& glass, std::span<const std::uint8_t> codes,
                                 const DrawArea& inside) {
    std::vector<TextPlace> found;
    for (const FontRef& font : module_fonts()) {
        const std::optional<Outline> outline = outline_of(font, codes);
        if (!outline || !outline->shows) continue;
        for (int i = 0; i < 64; ++i) {
            const TextLook look{font.id, static_cast<std::uint8_t>(1 + i % 4),
                                static_cast<std::uint8_t>(1 + i / 4 % 4),
                                static_cast<std::uint8_t>(i / 16 % 2), i / 32 != 0};
            find_look(glass, font, look, *outline, codes, inside, found);
        }
    }
    return found;
}

bool goes_on(const DotRows& glass, const TextPlace& place) {
    FontRef font{};
    if (!find_font(place.look.font, font)) return false;
    const int blank = glyph_width(font, ' ') * place.look.zoom_x;
    for (int code = font.first; code <= font.last; ++code) {
        const auto letter = static_cast<std::uint8_t>(code);
        const int width = glyph_width(font, letter);
        if (width == 0 || !shows_dots(font, letter, width)) continue;
        const DrawnText drawn = draw_text(font, place.look, {&letter, 1});
        if (drawn.width == 0) continue;
        for (const bool after : {false, true})
            for (const int away : {0, blank}) {
                const auto cell = neighbour(place, width, away, after);
                if (!cell || !stands_at(glass, drawn, cell->x1, cell->y1, place.look.inverted))
                    continue;
                // What stands between is to be a blank of this look.
                const std::uint8_t space = ' ';
                const auto gap = neighbour(place, glyph_width(font, space), 0, after);
                if (away == 0 || (gap && stands_at(glass, draw_text(font, place.look, {&space, 1}),
                                                   gap->x1, gap->y1, place.look.inverted)))
                    return true;
            }
    }
    return false;
}

}  // namespace orvanel
