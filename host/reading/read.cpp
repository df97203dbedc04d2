#include "host/reading/read.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>
#include <optional>
#include <span>
#include <unordered_map>
#include <utility>

namespace orvanel {

namespace {

// A text is read along its direction: in columns from its first to its last, each a word of dots
// with the top one in bit 0. The glass is turned for texts that go upward, and shrunk by their
// zoom across, so that each dot of a glyph is a bit.

constexpr int max_columns = screen_width;

/// As many rows as a word compares; higher glyphs are compared in full where these agree.
constexpr int max_rows = 64;

constexpr std::uint64_t low_bits(int n) {
    return n >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << n) - 1;
}

/// A column of the turned and shrunk glass: whether each block of dots is set, and whether all its
/// dots are alike. Bits beyond the glass are clear in both.
struct Column {
    std::array<std::uint64_t, 5> set, alike;  // the last word stays clear, for `bits_from`
};

std::uint64_t bits_from(const std::array<std::uint64_t, 5>& bits, int at) {
    const auto word = static_cast<std::size_t>(at / 64);
    const int shift = at % 64;
    return shift == 0 ? bits[word] : bits[word] >> shift | bits[word + 1] << (64 - shift);
}

/// The glass as a text of one rotation and zoom across sees it, from one of the rows where its
/// blocks may begin.
struct View {
    std::uint8_t rotation, zoom_y;
    int phase;          // dots that its first row of blocks lies below the edge
    int columns, rows;  // rows in blocks
    std::array<Column, max_columns> column;
};

bool glass_dot(const DotRows& glass, std::uint8_t rotation, int along, int across) {
    const int x = rotation == 0 ? along : across, y = rotation == 0 ? across : last_y - along;
    return dot_at(glass[static_cast<std::size_t>(y)], x);
}

void look_from(const DotRows& glass, View& view) {
    const bool turned = view.rotation == 1;
    view.columns = turned ? screen_height : screen_width;
    view.rows = ((turned ? screen_width : screen_height) - view.phase) / view.zoom_y;
    for (int u = 0; u < view.columns; ++u) {
        Column& column = view.column[static_cast<std::size_t>(u)];
        column = {};
        for (int row = 0; row < view.rows; ++row) {
            int set = 0;
            for (int i = 0; i < view.zoom_y; ++i)
                set += glass_dot(glass, view.rotation, u, view.phase + row * view.zoom_y + i);
            const auto word = static_cast<std::size_t>(row / 64);
            const std::uint64_t bit = std::uint64_t{1} << row % 64;
            if (set == view.zoom_y) column.set[word] |= bit;
            if (set == 0 || set == view.zoom_y) column.alike[word] |= bit;
        }
    }
}

/// A glyph that shows a dot.
struct Glyph {
    std::uint8_t code;
    int lead;    // clear columns before the first that isn't
    int weight;  // how much a place with just these dots tells: changes from dot to dot
    std::vector<std::uint64_t> columns;
};

/// A font, its glyphs found by the first column that shows a dot and the one after it.
struct ReadingFont {
    FontRef font;
    int rows;          // compared, of its height
    int blank;         // width of a blank, 0 if it has none
    bool begins_full;  // a glyph's first column that shows a dot shows no other colour
    std::vector<Glyph> glyphs;
    std::unordered_map<std::uint64_t, std::vector<std::size_t>> by_columns;  // by key_of
    std::array<std::uint64_t, 256> firsts;  // a bit for each hash of a first such column
    std::array<std::uint64_t, 256> keys;    // a bit for each hash of a key: most places have none
};

std::size_t place_of(std::uint64_t column) {
    return static_cast<std::size_t>(column * 0x9E3779B97F4A7C15U >> 50);
}

bool may_begin(const ReadingFont& font, std::uint64_t column) {
    const std::size_t place = place_of(column);
    return (font.firsts[place / 64] >> place % 64 & 1) != 0;
}

std::uint64_t key_of(std::uint64_t column, std::uint64_t next) {
    return (column * 0x9E3779B97F4A7C15U ^ next) * 0xD6E8FEB86659FD93U;
}

/// Of a glyph that has no column after its first that shows a dot.
std::uint64_t narrow_key_of(std::uint64_t column) {
    return column * 0x9E3779B97F4A7C15U + 0xA5A5A5A5A5A5A5A5U;
}

bool may_hold(const ReadingFont& font, std::uint64_t key) {
    return (font.keys[key >> 56] >> (key >> 50 & 63) & 1) != 0;
}

Glyph glyph_of(const FontRef& font, std::uint8_t code, int width, int rows) {
    Glyph glyph{code, width, 0, {}};
    std::uint64_t before = 0;
    for (int x = 0; x < width; ++x) {
        std::uint64_t column = 0;
        for (int y = 0; y < rows; ++y)
            if (glyph_dot(font, code, x, y)) column |= std::uint64_t{1} << y;
        if (column != 0 && glyph.lead == width) glyph.lead = x;
        glyph.weight += std::popcount(column ^ before) + std::popcount(column ^ column << 1);
        glyph.columns.push_back(column);
        before = column;
    }
    return glyph;
}

ReadingFont reading_font(const FontRef& font) {
    ReadingFont reading{};
    reading.font = font;
    reading.rows = std::min<int>(font.height, max_rows);
    reading.blank = glyph_width(font, ' ');
    for (int code = font.first; code <= font.last; ++code) {
        const auto letter = static_cast<std::uint8_t>(code);
        const int width = glyph_width(font, letter);
        if (width == 0 || width > screen_width || font.height > screen_width) continue;
        Glyph glyph = glyph_of(font, letter, width, reading.rows);
        if (glyph.lead == width) continue;
        const auto lead = static_cast<std::size_t>(glyph.lead);
        const std::uint64_t first = glyph.columns[lead];
        const std::size_t place = place_of(first);
        reading.firsts[place / 64] |= std::uint64_t{1} << place % 64;
        reading.begins_full = reading.begins_full || first == low_bits(reading.rows);
        const bool is_narrow = lead + 1 == glyph.columns.size();
        const std::uint64_t key =
            is_narrow ? narrow_key_of(first) : key_of(first, glyph.columns[lead + 1]);
        reading.by_columns[key].push_back(reading.glyphs.size());
        reading.keys[key >> 56] |= std::uint64_t{1} << (key >> 50 & 63);
        reading.glyphs.push_back(std::move(glyph));
    }
    return reading;
}

/// The blocks of one row and those below it, as a font compares them.
struct Band {
    const View* view;
    int row, rows;
};

std::uint64_t bits_of(const Band& band, int u) {
    return bits_from(band.view->column[static_cast<std::size_t>(u)].set, band.row) &
           low_bits(band.rows);
}

bool is_whole(const Band& band, int u) {
    const std::uint64_t all = low_bits(band.rows);
    return (bits_from(band.view->column[static_cast<std::size_t>(u)].alike, band.row) & all) == all;
}

/// Whether `count` columns from u on are blocks of this column.
bool is_column(const Band& band, int u, int count, std::uint64_t column) {
    for (const int end = u + count; u < end; ++u)
        if (bits_of(band, u) != column || !is_whole(band, u)) return false;
    return true;
}

bool is_glyph(const Band& band, int from, int zoom, const Glyph& glyph, std::uint64_t flip) {
    if (from < 0 || from + zoom * std::ssize(glyph.columns) > band.view->columns) return false;
    for (const std::uint64_t column : glyph.columns) {
        if (!is_column(band, from, zoom, column ^ flip)) return false;
        from += zoom;
    }
    return true;
}

bool is_blank(const Band& band, int from, int columns, std::uint64_t flip) {
    return columns > 0 && from + columns <= band.view->columns &&
           is_column(band, from, columns, flip);
}

/// A bit for each row of a view, as many words as it takes.
struct RowBits {
    std::array<std::uint64_t, 4> word;
    std::size_t words;
};

/// The bits below, each by so many rows.
RowBits from_below(const RowBits& bits, int by) {
    RowBits result{{}, bits.words};
    const auto words = static_cast<std::size_t>(by / 64);
    const int rest = by % 64;
    for (std::size_t i = 0; i + words < bits.words; ++i) {
        result.word[i] = bits.word[i + words] >> rest;
        if (rest != 0 && i + words + 1 < bits.words)
            result.word[i] |= bits.word[i + words + 1] << (64 - rest);
    }
    return result;
}

/// The rows from which on one of `rows` has its bit.
RowBits any_of(RowBits bits, int rows) {
    for (int have = 1; have < rows;) {
        const int more = std::min(have, rows - have);
        const RowBits below = from_below(bits, more);
        for (std::size_t i = 0; i < bits.words; ++i)
            bits.word[i] |= below.word[i];
        have += more;
    }
    return bits;
}

/// The rows where a column of this font may begin a glyph: all its blocks are alike in themselves,
/// and it shows both colours, unless the font begins a glyph with a full column.
RowBits telling_rows(const View& view, const Column& column, const ReadingFont& font) {
    RowBits rows{{}, static_cast<std::size_t>((view.rows + 63) / 64)};
    if (font.begins_full) {
        rows.word.fill(~std::uint64_t{0});
    } else {
        std::ranges::copy_n(column.set.begin(), 4, rows.word.begin());
        const RowBits below = from_below(rows, 1);
        for (std::size_t i = 0; i < rows.words; ++i)
            rows.word[i] ^= below.word[i];
        rows = any_of(rows, font.rows - 1);
    }
    if (view.zoom_y == 1) return rows;
    RowBits mixed{{}, rows.words};
    for (std::size_t i = 0; i < rows.words; ++i)
        mixed.word[i] = ~column.alike[i];
    mixed = any_of(mixed, font.rows);
    for (std::size_t i = 0; i < rows.words; ++i)
        rows.word[i] &= ~mixed.word[i];
    return rows;
}

/// A glyph found at a place.
struct Spot {
    int row;
    bool inverted;
    int zoom;      // along
    int from, to;  // columns of its cell, the last one after it
    const Glyph* glyph;
};

/// Equal for spots that may stand in one text.
int look_of(const Spot& spot) { return (spot.row * 2 + spot.inverted) * 8 + spot.zoom; }

/// Those of the glyphs whose first column that shows a dot is column u of the band.
void try_glyphs(const Band& band, int u, int zoom, std::uint64_t flip, const ReadingFont& font,
                const std::vector<std::size_t>& glyphs, std::vector<Spot>& spots) {
    for (const std::size_t g : glyphs) {
        const Glyph& glyph = font.glyphs[g];
        const int from = u - glyph.lead * zoom;
        const int to = from + zoom * static_cast<int>(glyph.columns.size());
        if (is_glyph(band, from, zoom, glyph, flip))
            spots.push_back({band.row, flip != 0, zoom, from, to, &glyph});
    }
}

/// The glyphs whose first column that shows a dot is column u of the band.
void find_spots(const Band& band, int u, const ReadingFont& font, std::vector<Spot>& spots) {
    const std::uint64_t bits = bits_of(band, u);
    for (const std::uint64_t flip : {std::uint64_t{0}, low_bits(font.rows)}) {
        const std::uint64_t first = bits ^ flip;
        if (!may_begin(font, first)) continue;
        for (int zoom = 1; zoom <= 4 && u + zoom <= band.view->columns; ++zoom) {
            if (bits_of(band, u + zoom - 1) != bits) break;
            const int beside = u + zoom;
            const std::uint64_t next = beside < band.view->columns ? bits_of(band, beside) : 0;
            for (const std::uint64_t key : {key_of(first, next ^ flip), narrow_key_of(first)}) {
                if (!may_hold(font, key)) continue;
                const auto found = font.by_columns.find(key);
                if (found != font.by_columns.end())
                    try_glyphs(band, u, zoom, flip, font, found->second, spots);
            }
        }
    }
}

/// All glyphs of a font in a view, by row and look, and from left to right.
std::vector<Spot> spots_of(const View& view, const ReadingFont& font) {
    std::vector<Spot> spots;
    for (int u = 0; u < view.columns; ++u) {
        const RowBits rows = telling_rows(view, view.column[static_cast<std::size_t>(u)], font);
        for (std::size_t word = 0; word < rows.words; ++word)
            for (std::uint64_t left = rows.word[word]; left != 0; left &= left - 1) {
                const int row = 64 * static_cast<int>(word) + std::countr_zero(left);
                if (row + font.rows <= view.rows)
                    find_spots({&view, row, font.rows}, u, font, spots);
            }
    }
    std::ranges::stable_sort(spots, {},
                             [](const Spot& spot) { return look_of(spot) << 8 | spot.from; });
    return spots;
}

/// A way to read some dots.
struct Reading {
    ReadText text;
    int weight;
};

bool is_letter(std::uint8_t code) {
    return (code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z') ||
           (code >= 'a' && code <= 'z') || (code >= 0x80 && code <= 0xA5);
}

/// The dots of a text in the look of a view, as an area of the glass.
DrawArea area_of(const View& view, int row, int height, int from, int to) {
    const int across1 = view.phase + row * view.zoom_y;
    const int across2 = across1 + height * view.zoom_y - 1;
    const auto y = [](int v) { return static_cast<std::uint8_t>(v); };
    if (view.rotation == 0) return {from, y(across1), to - 1, y(across2)};
    return {across1, y(last_y - to + 1), across2, y(last_y - from)};
}

/// Whether nothing touches the area: the dots around it are as its background.
bool stands_free(const DotRows& glass, const DrawArea& a, bool inverted) {
    for (int y = a.y1 - 1; y <= a.y2 + 1; ++y)
        for (int x = a.x1 - 1; x <= a.x2 + 1; ++x) {
            const bool outside = x < 0 || y < 0 || x > last_x || y > last_y;
            const bool within = x >= a.x1 && x <= a.x2 && y >= a.y1 && y <= a.y2;
            if (!outside && !within && dot_at(glass[static_cast<std::size_t>(y)], x) != inverted)
                return false;
        }
    return true;
}

/// What is compared of a higher font are its upper rows: the rest decides here.
bool is_there(const DotRows& glass, const ReadingFont& font, const ReadText& text) {
    if (font.font.height <= max_rows) return true;
    const auto found = find_text(glass, text.codes, text.place.area);
    return std::ranges::any_of(found, [&](const TextPlace& place) {
        return place.look.font == text.place.look.font && place.area.x1 == text.place.area.x1 &&
               place.area.y1 == text.place.area.y1;
    });
}

constexpr std::size_t no_spot = std::numeric_limits<std::size_t>::max();

/// The best text that a spot begins.
struct Chain {
    int weight;
    std::size_t next;  // the spot after it, or no_spot
    bool after_blank;  // which stands after a blank
    bool begins;       // no other spot leads here
};

/// Chains the spots of one row and look, from the last to the first.
std::vector<Chain> chains_of(std::span<const Spot> spots, const Band& band, int blank,
                             std::uint64_t flip) {
    std::vector<Chain> chains(spots.size());
    std::array<std::size_t, max_columns + 1> best_at{};  // the best chain from a column on
    best_at.fill(no_spot);
    for (std::size_t i = spots.size(); i-- > 0;) {
        const Spot& spot = spots[i];
        Chain& chain = chains[i];
        chain = {spot.glyph->weight, best_at[static_cast<std::size_t>(spot.to)], false, true};
        const int after = spot.to + blank;
        if (chain.next == no_spot && after <= max_columns && is_blank(band, spot.to, blank, flip)) {
            chain.next = best_at[static_cast<std::size_t>(after)];
            chain.after_blank = chain.next != no_spot;
        }
        if (chain.next != no_spot) {
            chain.weight += chains[chain.next].weight;
            chains[chain.next].begins = false;
        }
        std::size_t& best = best_at[static_cast<std::size_t>(spot.from)];
        if (best == no_spot || chains[best].weight < chain.weight) best = i;
    }
    return chains;
}

/// The text of the chain that begins at spot `i`, if it can be one.
std::optional<Reading> reading_of(const DotRows& glass, std::span<const Spot> spots,
                                  std::span<const Chain> chains, std::size_t i, const View& view,
                                  const ReadingFont& font) {
    const Spot& first = spots[i];
    const TextLook look{font.font.id, static_cast<std::uint8_t>(first.zoom), view.zoom_y,
                        view.rotation, first.inverted};
    Reading reading{{{{}, look}, {}}, chains[i].weight};
    int to = 0, letters = 0, shown = 0;
    for (std::size_t j = i; j != no_spot; j = chains[j].next) {
        const std::uint8_t code = spots[j].glyph->code;
        reading.text.codes.push_back(code);
        if (chains[j].after_blank) reading.text.codes.push_back(' ');
        to = spots[j].to;
        letters += is_letter(code);
        ++shown;
    }
    DrawArea& area = reading.text.place.area;
    area = area_of(view, first.row, font.font.height, first.from, to);
    if (area.x2 > last_x || area.y2 > last_y) return std::nullopt;
    const bool needs_room = letters == 0 || shown <= 2;
    if (needs_room && !stands_free(glass, area, look.inverted)) return std::nullopt;
    if (!is_there(glass, font, reading.text)) return std::nullopt;
    return reading;
}

void read_view(const DotRows& glass, const View& view, const ReadingFont& font,
               std::vector<Reading>& readings) {
    const std::vector<Spot> spots = spots_of(view, font);
    for (std::size_t start = 0; start < spots.size();) {
        std::size_t end = start;
        while (end < spots.size() && look_of(spots[end]) == look_of(spots[start]))
            ++end;
        const std::span of_look = std::span(spots).subspan(start, end - start);
        const Spot& first = spots[start];
        const Band band{&view, first.row, font.rows};
        const auto chains = chains_of(of_look, band, font.blank * first.zoom,
                                      first.inverted ? low_bits(font.rows) : 0);
        for (std::size_t i = 0; i < of_look.size(); ++i)
            if (chains[i].begins)
                if (auto reading = reading_of(glass, of_look, chains, i, view, font))
                    readings.push_back(std::move(*reading));
        start = end;
    }
}

bool overlap(const DrawArea& a, const DrawArea& b) {
    return a.x1 <= b.x2 && b.x1 <= a.x2 && a.y1 <= b.y2 && b.y1 <= a.y2;
}

}  // namespace

std::vector<ReadText> read_texts(const DotRows& glass) {
    std::vector<ReadingFont> fonts;
    for (const FontRef& font : module_fonts())
        fonts.push_back(reading_font(font));
    std::vector<Reading> readings;
    View view{};
    for (std::uint8_t rotation = 0; rotation < 2; ++rotation)
        for (std::uint8_t zoom = 1; zoom <= 4; ++zoom)
            for (int phase = 0; phase < zoom; ++phase) {
                view.rotation = rotation, view.zoom_y = zoom, view.phase = phase;
                look_from(glass, view);
                for (const ReadingFont& font : fonts)
                    read_view(glass, view, font, readings);
            }
    std::ranges::stable_sort(readings, std::greater{}, &Reading::weight);
    std::vector<ReadText> texts;
    for (Reading& reading : readings) {
        const DrawArea& area = reading.text.place.area;
        if (std::ranges::none_of(
                texts, [&](const ReadText& text) { return overlap(area, text.place.area); }))
            texts.push_back(std::move(reading.text));
    }
    std::ranges::sort(texts, [](const ReadText& a, const ReadText& b) {
        const DrawArea &p = a.place.area, &q = b.place.area;
        return std::pair(p.y1, p.x1) < std::pair(q.y1, q.x1);
    });
    return texts;
}

}  // namespace orvanel
