// outline.h: the two shapes of the window: the whole rectangle of the skin within a frame, or cut
// to the module on it, without the pixels of the cut-out key.

#pragma once

#include <cstdint>
#include <vector>

namespace orvanel {

/// Which window pixels are there: `height` rows of (width + 7) / 8 bytes, top row first, leftmost
/// pixel in bit 7, a set bit is a pixel of the window. Bits after a row's last pixel are 0.
struct Outline {
    int width, height;
    std::vector<std::uint8_t> rows;
};

/// The whole rectangle of the window.
Outline whole_window();

/// The outline of the present skin at the present zoom and rotation, in window pixels of the client
/// area. With z window pixels a dot and s pixels of the skin a dot, pixel x, y of the skin takes
/// away, if it has the key's index, the columns x * z / s to (x + 1) * z / s and the rows alike,
/// each division without its fraction, the ends exclusive. So where z is less than s the pixels
/// that come out empty take nothing away.
Outline skin_outline();

/// Gives the skin's key its colour for either shape, and the window that shape. Main thread, after
/// prepare_view, and again after each change of zoom or rotation while the window is cut. The
/// caller repaints.
void window_show_frame();
void window_cut_to_skin();

}  // namespace orvanel
