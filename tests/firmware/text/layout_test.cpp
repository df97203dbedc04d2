#include "firmware/raster/area_fill.h"
#include "tests/firmware/raster/raster_plain.h"
#include "tests/firmware/text/text_support.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>

namespace orvanel {
namespace {

/// Three codes: an F of 3 x 4 dots, one single dot, and a bar of 130 without dots.
void fresh_string() {
    fresh_text();
    put_font(5, 0x2000, {'A', 4, 3, {3, 1, 130}, {0xE0, 0x80, 0xC0, 0x80, 0x80, 0x80, 0x80, 0x80}});
    power_on_fonts();
    active_font = &string_font;
    active_style = &string_style;
}

std::string drawn(DrawArea area) { return dots(main_plane(), area); }

// The rules told once more, dot by dot and in the text's own directions: u counts along the line,
// v across the lines, whatever the rotation; only `glass` and `room` know where these lead.
struct Reference {
    const TestFont& font;
    const TextStyle& style;
    int ax, ay;  // anchor
    char align;
    std::uint8_t attr;
    PlaneSet planes;
};

struct Letter {
    std::uint8_t width, code;  // width 0: a flash switch
};
using Line = std::vector<Letter>;

std::array<int, 2> glass(const Reference& r, int u, int v) {
    switch (r.style.rotation) {
    case 0:
        return {r.ax + u, r.ay + v};
    case 1:
        return {r.ax + v, r.ay - u};
    case 2:
        return {r.ax - u, r.ay - v};
    default:
        return {r.ax - v, r.ay + u};
    }
}

/// Dots from the anchor to the edge of the glass, `turns` quarters to the left of the text.
int room(const Reference& r, int turns) {
    return std::array{last_x - r.ax, r.ay, r.ax, last_y - r.ay}[(r.style.rotation + turns) & 3];
}

void reference_glyph(Reference& r, Letter letter, int u, int v) {
    const std::uint8_t* rows = r.font.bits.data();
    for (std::size_t i = 0; i + 1 < letter.code; ++i)
        rows += r.font.height * stride_of(r.font.widths[i]);
    const int flash_link = flash_link_of(r.style.link, r.attr);
    for (int row = 0; row < r.font.height * r.style.zoom_y; ++row)
        for (int col = 0; col < letter.width * r.style.zoom_x; ++col) {
            const auto [x, y] = glass(r, u + col, v + row);
            const bool p =
                packed_dot(rows, letter.width, col / r.style.zoom_x, row / r.style.zoom_y);
            link_dot(r.planes.data(), x, y, r.style.link, p);
            link_dot(&r.planes[plane_bytes], x, y, flash_link, p);
        }
}

int length_of(const Reference& r, const Line& line) {
    int length = 0;
    for (const Letter& letter : line)
        length += letter.width * r.style.zoom_x;
    return length;
}

int start_of(const Reference& r, int length) {
    const int before = r.align == 'C' ? length / 2 - 1 : r.align == 'R' ? length - 1 : 0;
    return std::max(-before, -room(r, 2));
}

void reference_line(Reference& r, const Line& line, int v) {
    const bool must_fit = r.style.rotation == 1 || r.style.rotation == 2;
    int u = start_of(r, length_of(r, line));
    for (const Letter& letter : line) {
        const int next = u + letter.width * r.style.zoom_x;
        if (next == u) {
            r.attr = r.attr == letter.code ? 0 : letter.code <= 2 ? letter.code : r.attr;
            continue;
        }
        if (must_fit && next - 1 > room(r, 0)) return;
        reference_glyph(r, letter, u, v);
        u = next;
        if (!must_fit && u > room(r, 0)) return;
    }
}

/// Draws the lines; the result is what is to be painted.
std::vector<PaintedRect> reference_string(Reference& r, const std::vector<Line>& lines) {
    int longest = 0;
    for (const Line& line : lines)
        longest = std::max(longest, length_of(r, line));
    if (longest == 0) return {};
    const int height = r.font.height * r.style.zoom_y;
    int v = 0;
    for (const Line& line : lines) {
        if ((r.style.rotation >= 2 ? v + height - 1 : v) > room(r, 3)) break;
        reference_line(r, line, v);
        v += height + r.font.line_gap;
    }
    const int lines_v = static_cast<int>(lines.size()) * (height + r.font.line_gap);
    const int u = start_of(r, longest);
    const auto [x, y] = glass(r, u, 0);
    const auto [far_x, far_y] = glass(r, u + longest - 1, lines_v - r.font.line_gap - 1);
    const PaintedRect box{std::max(std::min(x, far_x), 0), std::max(std::min(y, far_y), 0),
                          std::min(std::max(x, far_x), last_x),
                          std::min(std::max(y, far_y), last_y)};
    if (box.x1 > box.x2 || box.y1 > box.y2) return {};
    return {box};
}

TEST(DrawString, agrees_with_a_plain_drawing_of_random_strings) {
    fresh_string();
    std::mt19937 random(20);
    const auto below = [&random](unsigned n) { return static_cast<std::uint8_t>(random() % n); };
    for (int i = 0; i < 3000; ++i) {
        const unsigned largest = below(10) == 0 ? 140 : 20;
        TestFont font{1, low8(1 + below(largest)), below(16), {}, {}};
        while (font.widths.size() < 8)
            font.widths.push_back(below(below(4) == 0 ? 2 : largest));
        font.bits.resize(8 * 140 * 18);
        std::ranges::generate(font.bits, [&] { return below(256); });
        std::ranges::generate(graphics_planes, [&] { return below(256); });
        put_font(6, 0x1000, font);
        string_font.id = no_font;
        select_font(6, string_font);
        string_style = {low8(1 + below(4)), low8(1 + below(4)), below(8), 0, below(4)};
        string_flash = below(3);

        std::string text;
        std::vector<Line> lines(1);
        for (int left = below(25); left > 0; --left) {
            const std::uint8_t code = below(13);  // 9 is outside the font, 10 would end the string
            if (code == 0)
                lines.emplace_back();
            else if (code > 10)
                lines.back().push_back({0, low8(code - 10)});
            else if (code <= 8)
                lines.back().push_back({font.widths[code - 1], code});
            text += "|\1\2\3\4\5\6\7\10\11\11~@"[code];
        }
        // Two thirds of the coordinates at an edge or next to it.
        const int x = std::array<int, 3>{0, last_x - below(2), below(240)}[below(3)];
        const int y = std::array<int, 3>{0, last_y - below(2), below(128)}[below(3)];
        Reference r{font, string_style, x, y, "LCR?"[below(4)], string_flash, graphics_planes};
        const std::vector<PaintedRect> painted = reference_string(r, lines);
        fake_platform.painted.clear();
        both_planes = false;
        draw_text(text, x, y, r.align);
        ASSERT_TRUE(graphics_planes == r.planes) << i << ", rotation " << +string_style.rotation;
        ASSERT_EQ(fake_platform.painted, painted) << i << ", rotation " << +string_style.rotation;
    }
}

TEST(DrawString, places_each_line_by_itself_and_moves_what_begins_too_far_left) {
    fresh_string();
    draw_text("AAA|B", 100, 0, 'C');
    EXPECT_EQ(drawn({96, 0, 106, 0}), "\n.#########.\n");
    EXPECT_EQ(drawn({96, 7, 106, 7}), "\n.....#.....\n") << "one dot is centred one dot too far";
    draw_text("AAA", 5, 20, 'R');
    EXPECT_EQ(drawn({0, 20, 10, 20}), "\n#########..\n");
}

TEST(DrawString, turns_and_stretches_along_the_text_but_not_the_line_gap) {
    fresh_string();
    string_style = {2, 1, link_replace, 0, 1};
    draw_text("A|B", 0, 5);
    EXPECT_EQ(drawn({0, 0, 7, 6}), R"(
#.......
#.......
#.#.....
#.#.....
####...#
####...#
........
)");
}

TEST(DrawString, of_nothing_paints_nothing) {
    fresh_string();
    for (const char* text : {"", "~", "~|@", "xyz"})
        draw_text(text, 0, 0);
    draw_text("B", last_x, 10, 'C');  // starts beyond the glass
    string_font.height = 0;
    draw_text("A|A", 0, 0);
    EXPECT_TRUE(fake_platform.painted.empty());
    EXPECT_EQ(graphics_planes, PlaneSet{});
}

TEST(DrawString, ends_behind_a_glyph_whose_advance_passes_256) {
    fresh_string();
    string_style = {2, 1, link_all_set, 0, 0};
    draw_text("CB|B", 0, 0);
    EXPECT_EQ(drawn({236, 0, 239, 0}), "\n####\n");
    EXPECT_EQ(drawn({0, 7, 4, 7}), "\n##...\n") << "the next line is drawn";
}

TEST(LayoutString, stops_where_the_buffer_ends_and_leaves_the_rest_in_the_stream) {
    struct Case {
        std::string sent;
        int lines, width, left;  // left: bytes
    };
    const auto times = [](std::size_t n, char c) { return std::string(n, c); };
    for (const auto& [sent, lines, width, left] :
         {Case{times(381, 'B') + "\r", 1, 381, 0}, Case{times(382, 'B') + "\rX", 0, 0, 2},
          Case{times(300, '|'), 255, 0, 45}, Case{"A|" + times(400, '~'), 1, 3, 20},
          Case{"||" + times(378, 'B') + "\nX", 3, 378, 1}}) {
        fresh_string();
        rx_pipe_put_block(std::vector<std::uint8_t>(sent.begin(), sent.end()));
        layout_string(StringSource::stream, false);
        EXPECT_EQ(line_count, lines) << sent;
        EXPECT_EQ(max_width, width) << sent;
        EXPECT_EQ(rx_count(), left) << sent;
    }
    draw_text(times(381, 'B'), last_x, 0, 'R');
    EXPECT_EQ(drawn({236, 0, 239, 0}), "\n####\n") << "a line of more than 255 entries is whole";
}

TEST(LayoutString, knows_escapes_and_takes_an_alignment_letter_as_its_first_character) {
    struct Case {
        const char* text;
        char result;
        int lines, width;  // of the widest line, characters
    };
    fresh_string();
    select_font(0, string_font);
    for (const auto& [text, result, lines, width] :
         {Case{"Rab", 'R', 1, 2}, Case{"abC", 'a', 1, 3}, Case{"~|CC", 'C', 2, 1},
          Case{"\\LL", 'L', 1, 1}, Case{"\x1FL", '\x1F', 1, 1}, Case{"|~", 0, 2, 0},
          Case{"\\|\\~\\@\\\\|\\\rb", '|', 2, 4}}) {
        const std::vector<std::uint8_t> data(text, text + std::string_view(text).size());
        run_cursor = data;
        EXPECT_EQ(layout_string(StringSource::memory, true), result) << text;
        EXPECT_EQ(line_count, lines) << text;
        EXPECT_EQ(max_width, 8 * width) << text;
    }
    EXPECT_EQ(run_cursor.size(), 1U) << "what follows the end mark stays";
    run_cursor = {};
    restart_requested = true;
    layout_string(StringSource::stream, false);
    EXPECT_EQ(line_count, 1) << "a restart ends a string";
    restart_requested = false;
}

}  // namespace
}  // namespace orvanel
