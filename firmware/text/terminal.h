// terminal.h: the text terminal that takes every byte which is no command: a grid of characters
// over the whole display, on a plane of its own, with a blinking block cursor.

#pragma once

#include "firmware/raster/refresh.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace orvanel {

/// `terminal_on`, which belongs to it, is in refresh.h, where the planes are composed.
struct TerminalState {
    std::uint8_t term_col, term_row;    // cursor, 1-based
    std::uint8_t term_cols, term_rows;  // of the grid
    bool pending_scroll;  // the last row is full; the scroll waits for the byte that needs it
    bool cursor_on;       // cursor wanted
    std::uint8_t saved_col, saved_row;  // of the last save, kept over a reset; 0: none yet
    bool saved_pending;                 // saved with them
};

extern TerminalState terminal;

/// The block cursor is in the plane at this moment.
extern bool cursor_shown;

/// Ticks until the cursor toggles; counted down by firmware_tick.
extern std::atomic<std::uint8_t> blink_timer;

/// Prints a byte at the cursor; LF, FF and CR act, every other value prints. Dropped while the
/// terminal is off.
void terminal_put(std::uint8_t byte);

/// The cursor's share of a loop pass: toggles the block every 600 ms.
void terminal_blink();

/// Makes draw_area, the whole screen here, the terminal's area, computes the grid from
/// terminal_font, clears the plane, and lets the cursor blink at once. Leaves the terminal's plane
/// selected. Needs terminal_font.
void terminal_init();

/// Program start: no position is saved.
void cold_start_terminal();

/// Every command of group T, defined or not, starts with the one before its op letter is read and
/// ends with the other.
void cursor_hide();
void cursor_show();

/// The module's version, as ESC T V prints it and ESC S V answers it.
extern const char version_text[];

// Handlers of group T.
void terminal_off();
void terminal_show();
void set_cursor();
void set_position();
void restore_position();
void save_position();
void print_interface();
void print_version();

}  // namespace orvanel
