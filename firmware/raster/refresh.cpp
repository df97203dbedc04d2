#include "firmware/raster/refresh.h"

#include "firmware/raster/rows.h"
#include "firmware/raster/store_slots.h"
#include "firmware/raster/transpose.h"
#include "seam/host_calls.h"

#include <cstddef>

namespace orvanel {

constinit UprightImage lcd_image{};
constinit UprightImage lcd_image_flash{};
constinit RotatedImage lcd_image_rot{};
constinit RotatedImage lcd_image_rot_flash{};

constinit bool graphic_on = false;
constinit bool terminal_on = false;
constinit bool clipboard_view = false;
constinit DrawArea dirty_area{};

constinit std::atomic<std::uint8_t> flash_period{0};
constinit std::atomic<std::uint8_t> flash_timer{0};
constinit std::atomic<std::uint8_t> flash_phase{0};

void power_on_display() {
    graphic_on = true;
    clipboard_view = false;
    flash_period.store(6);
    flash_timer.store(6);
    flash_phase.store(0);
}

bool image_dot(const UprightImage& image, int x, int y) {
    const auto& row = image[static_cast<std::size_t>(last_y - y)];
    const std::uint64_t word =
        row[static_cast<std::size_t>(x >> 6)].load(std::memory_order_relaxed);
    return (word >> (63 - (x & 63)) & 1) != 0;
}

namespace {

// A refresh works on blocks of at most 64 rows, as wide as a word of the upright images. The two
// phases of a block are composed once; their words go to the upright images as they are, and
// transposed to the rotated ones. The rows stand bottom-up, as in the images: word 63 is row `top`.
constexpr int block_rows = 64;
using Dots = std::array<std::uint64_t, block_rows>;

struct Block {
    Dots main, flash;
    int word;            // 0..3, of an upright row
    std::uint64_t mask;  // which of its dots change
    int top;             // first row, 0..127
    int rows;            // 1..64
};

void merge(std::atomic<std::uint64_t>& word, std::uint64_t dots, std::uint64_t mask) {
    const std::uint64_t old = word.load(std::memory_order_relaxed);
    word.store((old & ~mask) | (dots & mask), std::memory_order_relaxed);
}

/// Dots 64 * word to 64 * word + 63 of the plane row at `row`, 0 for those beyond the last.
std::uint64_t word_of(const std::uint8_t* row, int word) {
    if (word < 3) return load_dots(row + 8 * word);
    return load_dots(row + plane_stride - 8) << 16;
}

/// What the display shows in each phase of its planes and of the terminal's.
void compose(Block& block) {
    const std::uint8_t* planes =
        clipboard_view ? store_slots[clipboard_slot].buffer.data() : main_plane();
    std::size_t at = plane_index(0, block.top);
    for (std::size_t i = block_rows; i-- > block_rows - static_cast<std::size_t>(block.rows);) {
        std::uint64_t main = 0, flash = 0;
        if (graphic_on) {
            main = word_of(planes + at, block.word);
            flash = word_of(planes + plane_bytes + at, block.word);
        }
        if (terminal_on) {
            const std::uint64_t terminal = word_of(terminal_plane.data() + at, block.word);
            main |= terminal;
            flash |= terminal;
        }
        block.main[i] = main;
        block.flash[i] = flash;
        at += plane_stride;
    }
}

void show_upright(const Block& block) {
    const auto word = static_cast<std::size_t>(block.word);
    auto row = static_cast<std::size_t>(last_y - block.top);
    for (std::size_t i = block_rows; i-- > block_rows - static_cast<std::size_t>(block.rows);
         --row) {
        merge(lcd_image[row][word], block.main[i], block.mask);
        merge(lcd_image_flash[row][word], block.flash[i], block.mask);
    }
}

/// Transposes all 64 rows.
void transpose(Dots& dots) {
    for (std::size_t i = 0; i < 8; ++i)
        transpose_eight<8>(&dots[i]);
    for (std::size_t i = 0; i < block_rows; i += 8)
        transpose_eight<1>(&dots[i]);
}

/// Where the columns of a block go in the rows of the rotated images.
struct ColumnPlace {
    int shift;              // to the left, round the word
    std::size_t word;       // 0 or 1
    std::uint64_t mask;     // what of that word they take
    std::uint64_t wrapped;  // and of word 0: the rows from 64 on are there, and reach in from above
};

ColumnPlace column_place(const Block& block) {
    const std::uint64_t rows = all_dots >> (64 - block.rows);
    const int shift = block.top % 64;
    const std::uint64_t mask = rows << shift;
    return {shift, block.top < 64 ? std::size_t{1} : 0, mask, std::rotl(rows, shift) & ~mask};
}

void show_column(RotatedImage& image, const ColumnPlace& place, int x, std::uint64_t dots) {
    auto& row = image[static_cast<std::size_t>(last_x - x)];
    merge(row[place.word], dots, place.mask);
    if (place.wrapped != 0) merge(row[0], dots, place.wrapped);
}

/// Calls turn(dots) for the phases of the block. What doesn't flash is turned once for both. The
/// result is the second phase.
template <typename Turn> const Dots& turn_phases(Block& block, Turn turn) {
    const auto unused = static_cast<std::size_t>(block_rows - block.rows);
    const auto used = [unused](Dots& dots) { return std::span(dots).subspan(unused); };
    const bool flashes = !std::ranges::equal(used(block.main), used(block.flash));
    turn(block.main);
    if (!flashes) return block.main;
    turn(block.flash);
    return block.flash;
}

/// Eight rows or less need half of the steps, which leave each column in a byte of its own.
void show_rotated_bytes(Block& block) {
    const auto unused = block_rows - block.rows;
    const Dots& flash = turn_phases(block, [unused](Dots& dots) {
        std::fill(dots.begin() + 56, dots.begin() + unused, 0);
        transpose_eight<1>(&dots[56]);
    });
    const ColumnPlace place = column_place(block);
    const int left = 64 * block.word;
    const int last = 63 - std::countr_zero(block.mask);
    for (int column = std::countl_zero(block.mask); column <= last; column += 8) {
        const int turn = column + 8 + place.shift;
        for (int i = 0; i < 8; ++i) {
            const auto row = static_cast<std::size_t>(56 + i);
            const int x = left + column + i;
            show_column(lcd_image_rot, place, x, std::rotl(block.main[row], turn));
            show_column(lcd_image_rot_flash, place, x, std::rotl(flash[row], turn));
        }
    }
}

void show_rotated_words(Block& block) {
    const auto unused = block_rows - block.rows;
    const Dots& flash = turn_phases(block, [unused](Dots& dots) {
        std::fill(dots.begin(), dots.begin() + unused, 0);
        transpose(dots);
    });
    const ColumnPlace place = column_place(block);
    const int left = 64 * block.word;
    const int last = 63 - std::countr_zero(block.mask);
    for (int column = std::countl_zero(block.mask); column <= last; ++column) {
        const auto i = static_cast<std::size_t>(column);
        const int x = left + column;
        show_column(lcd_image_rot, place, x, std::rotl(block.main[i], place.shift));
        show_column(lcd_image_rot_flash, place, x, std::rotl(flash[i], place.shift));
    }
}

/// Transposes the block, which is of no use after that, and shows its columns.
void show_rotated(Block& block) {
    if (block.rows <= 8)
        show_rotated_bytes(block);
    else
        show_rotated_words(block);
}

}  // namespace

void refresh_rect(int x1, int y1, int x2, int y2) {
    // Whole bytes, so dots beside the rectangle that an earlier command left unrefreshed show too.
    const int left = std::max(x1, 0) / 8 * 8;
    const int right = std::min(x2, last_x) / 8 * 8 + 7;
    const int bottom = std::min(y2, last_y);
    Block block;
    for (block.word = left / 64; block.word <= right / 64; ++block.word) {
        block.mask = dots_between(left - 64 * block.word, right - 64 * block.word);
        for (block.top = std::max(y1, 0); block.top <= bottom; block.top += block_rows) {
            block.rows = std::min(bottom - block.top + 1, block_rows);
            compose(block);
            show_upright(block);
            show_rotated(block);
        }
    }
    repaint_rect(x1, y1, x2, y2);
}

void refresh_dirty() {
    if (is_empty(dirty_area)) return;
    refresh_rect(dirty_area.x1, dirty_area.y1, dirty_area.x2, dirty_area.y2);
}

void refresh_area() {
    dirty_area = draw_area;
    refresh_dirty();
}

void refresh_all() { refresh_rect(0, 0, last_x, last_y); }

void repaint_all() { repaint_rect(0, 0, last_x, last_y); }

}  // namespace orvanel
