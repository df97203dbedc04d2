// display.h: what the window shows of the module's glass: a bitmap of 1 bit a dot whose dots are
// those that the firmware draws.

#pragma once

#include "firmware/raster/refresh.h"
#include "host/skin/dib.h"
#include "host/skin/skin_rect.h"

#include <atomic>
#include <cstdint>
#include <span>

namespace orvanel {

/// Head, colours and stride are those of the bitmap, whose rows stay 0: see dib_block. Colour 0 is
/// that of a clear dot, colour 1 that of a set one.
struct Display : Dib {
    SkinRect area;                // where it lies on the skin
    const UprightImage* upright;  // the dots, one of the two; the other is nullptr
    const RotatedImage* rotated;
};

/// The words of row y, counted from the top: leftmost dot in the most significant bit of the first.
std::span<const std::atomic<std::uint64_t>> dot_row(const Display& display, int y);

/// The whole bitmap, with its dots as they are now: 40 bytes of header, two colours, rows of
/// `stride` bytes.
Bytes dib_block(const Display& display);

}  // namespace orvanel
