#include "host/scenario/text_commands.h"

#include "firmware/text/font.h"
#include "host/reading/read.h"
#include "host/scenario/glass.h"
#include "host/scenario/module_text.h"
#include "host/scenario/picture.h"
#include "host/scenario/report.h"
#include "host/scenario/waits.h"
#include "host/scenario/world.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <string>

namespace orvanel {

namespace {

constexpr std::int64_t look_us = 5000;  // between two looks for a text that is awaited

/// Has the look at the glass that `await-text` takes again and again: when the glass has changed
/// since the one before, and not too often.
struct Watch {
    std::vector<std::uint8_t> codes;
    TextWhere where;
    std::optional<std::array<BitPlane, 2>> seen;
    std::int64_t next_us;
};

std::array<BitPlane, 2> both_phases() {
    return {take_glass(Shown::main), take_glass(Shown::flash)};
}

bool look(Watch& watch) {
    if (clock_us() < watch.next_us) return false;
    watch.next_us = clock_us() + look_us;
    // A flash goes on without a change of what is shown in either phase.
    const bool flashes =
        !watch.where.any_phase && watch.seen && watch.seen->at(0) != watch.seen->at(1);
    std::array<BitPlane, 2> now = both_phases();
    if (watch.seen == now && !flashes) return false;
    watch.seen = now;
    const ModuleHalt halt;
    return shows_text(watch.codes, watch.where);
}

std::string area_words(const DrawArea& a) {
    return std::to_string(a.x1) + ' ' + std::to_string(a.y1) + ' ' + std::to_string(a.x2) + ' ' +
           std::to_string(a.y2);
}

// Terminal rows.

constexpr int terminal_cell = 8;  // dots, both ways
constexpr std::size_t terminal_columns = screen_width / terminal_cell;

using Cell = std::array<std::uint8_t, terminal_cell>;

Cell cell_at(const BitPlane& glass, std::size_t column, int row) {
    Cell cell{};
    for (std::size_t y = 0; y < cell.size(); ++y)
        cell[y] = glass[plane_index(static_cast<int>(column) * terminal_cell,
                                    (row - 1) * terminal_cell + static_cast<int>(y))];
    return cell;
}

Cell cell_of(std::uint8_t code) {
    const DrawnText drawn = draw_text(terminal_font, {0, 1, 1, 0, false}, {&code, 1});
    Cell cell{};
    for (std::size_t y = 0; y < cell.size(); ++y)
        cell[y] = static_cast<std::uint8_t>(drawn.rows[y][0] >> 56);
    return cell;
}

Cell inverse(Cell cell) {
    for (std::uint8_t& row : cell)
        row = static_cast<std::uint8_t>(~row);
    return cell;
}

/// Whether the row of the grid shows the text and nothing after it. The block cursor may stand on
/// one of its cells.
bool terminal_row_is(const BitPlane& glass, int row, std::vector<std::uint8_t> codes) {
    codes.resize(terminal_columns, ' ');
    int inverted = 0;
    for (std::size_t column = 0; column < terminal_columns; ++column) {
        const Cell shown = cell_at(glass, column, row), wanted = cell_of(codes[column]);
        if (shown == wanted) continue;
        if (shown != inverse(wanted) || ++inverted > 1) return false;
    }
    return true;
}

/// What the row says, with ? for what no character of the terminal shows.
std::string terminal_row_text(const BitPlane& glass, int row) {
    std::vector<std::uint8_t> codes;
    for (std::size_t column = 0; column < terminal_columns; ++column) {
        const Cell shown = cell_at(glass, column, row);
        std::uint8_t read = '?';
        for (int code = terminal_font.last; code >= terminal_font.first; --code) {
            const auto letter = static_cast<std::uint8_t>(code);
            if (glyph_width(terminal_font, letter) == 0) continue;
            const Cell cell = cell_of(letter);
            if (shown == cell || shown == inverse(cell)) read = letter;
        }
        codes.push_back(read);
    }
    while (!codes.empty() && codes.back() == ' ')
        codes.pop_back();
    return module_text(codes);
}

}  // namespace

void print_texts(const Arguments& a) {
    const ModuleHalt halt;
    const std::vector<ReadText> texts = read_texts(rows_of(take_glass(a.shown)));
    print_line("texts " + std::to_string(texts.size()));
    for (const ReadText& text : texts) {
        const TextLook& shown = text.place.look;
        print_line("text " + area_words(text.place.area) + ' ' + module_text(text.codes) +
                   " font " + std::to_string(shown.font) + " zoom " + std::to_string(shown.zoom_x) +
                   ' ' + std::to_string(shown.zoom_y) + (shown.rotation == 1 ? " upward" : "") +
                   (shown.inverted ? " inverted" : ""));
    }
}

void expect_text_command(const Arguments& a) {
    const ModuleHalt halt;
    if (!shows_text(a.bytes, a.where))
        report_fault(expectation_failed, why_unread(a.bytes, a.where));
}

void expect_no_text_command(const Arguments& a) {
    const ModuleHalt halt;
    if (shows_text(a.bytes, a.where))
        report_fault(expectation_failed, module_text(a.bytes) + " stands on the glass");
}

void await_text_command(const Arguments& a) {
    const auto watch = std::make_shared<Watch>(Watch{a.bytes, a.where, {}, 0});
    wait_for_condition([watch] { return look(*watch); },
                       [watch](const std::string& within) {
                           const ModuleHalt halt;
                           if (!shows_text(watch->codes, watch->where))
                               report_fault(expectation_failed,
                                            within + " " + why_unread(watch->codes, watch->where));
                       },
                       a.within_ms);
}

void expect_terminal_command(const Arguments& a) {
    const ModuleHalt halt;
    const int row = static_cast<int>(a.number);
    const BitPlane glass = take_glass(Shown::present_phase);
    const bool drawable = std::ranges::all_of(a.bytes, [](std::uint8_t code) {
        return glyph_width(terminal_font, code) == terminal_cell;
    });
    if (a.bytes.size() > terminal_columns)
        report_fault(wrong_line, "a row of the terminal has 30 characters, not " +
                                     std::to_string(a.bytes.size()));
    else if (!drawable)
        report_fault(wrong_line, "the terminal has no such character");
    else if (!terminal_row_is(glass, row, a.bytes))
        report_fault(expectation_failed, "row " + std::to_string(row) + " of the terminal is not " +
                                             module_text(a.bytes) + " but " +
                                             terminal_row_text(glass, row));
}

}  // namespace orvanel
