// refresh.h: from the planes to the glass. A refresh composes the changed rectangle into the four
// display images and has the host paint it; the primitives themselves never show anything.

#pragma once

#include "firmware/core/ground/draw_area.h"
#include "firmware/raster/planes.h"

#include <array>
#include <atomic>
#include <cstdint>

namespace orvanel {

/// The images that the host paints: rows of relaxed atomic words, the leftmost dot of a row in the
/// most significant bit of its first word, rows stored bottom-up. Written by firmware_thread, read
/// by the host's main thread. An upright row has 240 dots, its last 16 bits stay 0; a rotated one
/// has 128.
using UprightImage = std::array<std::array<std::atomic<std::uint64_t>, 4>, screen_height>;
using RotatedImage = std::array<std::array<std::atomic<std::uint64_t>, 2>, screen_width>;

/// Dot x, y is in stored row 127 - y.
extern UprightImage lcd_image;        // flash phase 0
extern UprightImage lcd_image_flash;  // flash phase 1

/// The same pictures turned 90 degrees clockwise: dot x, y of the module is column 127 - y of
/// stored row 239 - x.
extern RotatedImage lcd_image_rot;
extern RotatedImage lcd_image_rot_flash;

/// Whether dot x, y of the module (0..239, 0..127) is dark in an upright image.
bool image_dot(const UprightImage& image, int x, int y);

extern bool graphic_on;      // false hides the graphics planes; drawing in them goes on
extern bool terminal_on;     // false hides terminal_plane, and the terminal drops its bytes
extern bool clipboard_view;  // shows the clipboard slot's buffer in place of the graphics planes

/// The rectangle of the next refresh_dirty.
extern DrawArea dirty_area;

/// The flash clock, in ticks of 100 ms; served by firmware_tick on the host's main thread, which
/// shows lcd_image_flash while flash_phase is 1.
extern std::atomic<std::uint8_t> flash_period;  // 0..15, 0: no flashing
extern std::atomic<std::uint8_t> flash_timer;   // ticks until the phase changes
extern std::atomic<std::uint8_t> flash_phase;   // 0 or 1

/// Composes the rectangle (inclusive, on the glass, corners ordered) into the display images by
/// whole byte columns, then repaints just the rectangle.
void refresh_rect(int x1, int y1, int x2, int y2);

/// refresh_rect of dirty_area; nothing if that is empty.
void refresh_dirty();

/// dirty_area := draw_area, then refresh_dirty.
void refresh_area();

void refresh_all();

/// Asks the host to paint the whole display without composing it again: the phase has changed.
void repaint_all();

/// Power-on: graphics shown, clipboard view off, flash period 6 in phase 0.
void power_on_display();

// Handlers of group D, display, and Q, flash plane.
void clear_display();
void set_display();
void invert_display();
void display_off();
void display_on();
void show_clipboard();
void show_planes();
void flash_inverted();
void flash_same();
void flash_pattern();
void set_flash_period();

}  // namespace orvanel
