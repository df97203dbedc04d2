// outline.h: what the window is cut to when its frame is off: the module on the skin without the
// pixels of the cut-out key.

#pragma once

#include <cstdint>
#include <vector>

namespace orvanel {

/// Which window pixels are there: `height` rows of (width + 7) / 8 bytes, top row first, leftmost
/// pixel in bit 7, a set bit is a pixel of the window.
struct Outline {
    int width, height;
    std::vector<std::uint8_t> rows;
};

/// The outline of the present skin at the present zoom and rotation, in window pixels of the client
/// area.
Outline skin_outline();

}  // namespace orvanel
