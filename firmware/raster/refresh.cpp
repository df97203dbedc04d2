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

/// Transposes the block, which is of no use after that, and shows its columns.
void show_rotated(Block& block) {
    const std::uint64_t rows = all_dots >> (64 - block.rows);
    const int shift = block.top % 64;
    // The rows from 64 on are in word 0, and those that reach there from above wrap into it.
    const std::size_t word = block.top < 64 ? 1 : 0;
    const std::uint64_t mask = rows << shift;
    const std::uint64_t wrapped = std::rotl(rows, shift) & ~mask;
    const auto show_column = [=](RotatedImage& image, int x, std::uint64_t dots) {
        auto& row = image[static_cast<std::size_t>(last_x - x)];
        merge(row[word], dots, mask);
        if (wrapped != 0) merge(row[0], dots, wrapped);
    };

    const auto unused = static_cast<std::size_t>(block_rows - block.rows);
    const auto used = [unused](Dots& dots) { return std::span(dots).subspan(unused); };
    // What doesn't flash is turned once for both phases.
    const bool flashes = !std::ranges::equal(used(block.main), used(block.flash));
    const Dots& flash = flashes ? block.flash : block.main;
    const auto turn_phases = [&](auto turn) {
        turn(block.main);
        if (flashes) turn(block.flash);
    };

    const int first = std::countl_zero(block.mask);
    const int last = 63 - std::countr_zero(block.mask);
    const int left = 64 * block.word;
    if (block.rows <= 8) {
        // Eight rows need half of the steps, which leave each column in a byte of its own.
        turn_phases([unused](Dots& dots) {
            std::fill(dots.begin() + 56, dots.begin() + static_cast<std::ptrdiff_t>(unused), 0);
            transpose_eight<1>(&dots[56]);
        });
        for (int column = first; column <= last; column += 8) {
            const int turn = column + 8 + shift;
            for (int i = 0; i < 8; ++i) {
                const auto row = static_cast<std::size_t>(56 + i);
                show_column(lcd_image_rot, left + column + i, std::rotl(block.main[row], turn));
                show_column(lcd_image_rot_flash, left + column + i, std::rotl(flash[row], turn));
            }
        }
        return;
    }
    turn_phases([unused](Dots& dots) {
        std::fill(dots.begin(), dots.begin() + static_cast<std::ptrdiff_t>(unused), 0);
        transpose(dots);
    });
    for (int x = first; x <= last; ++x) {
        const auto i = static_cast<std::size_t>(x);
        show_column(lcd_image_rot, left + x, std::rotl(block.main[i], shift));
        show_column(lcd_image_rot_flash, left + x, std::rotl(flash[i], shift));
    }
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
