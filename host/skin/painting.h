// painting.h: composing what the window shows, skin and display, into one 32-bit picture, without a
// toolkit.

#pragma once

#include "seam/platform.h"

#include <cstdint>
#include <span>

namespace orvanel {

/// Composes the part `rect` (cut to the window, then widened to whole dots) of the client area in
/// the present view, flash phase and colours. `frame` holds window_width() * window_height() pixels
/// (host/skin/view.h), 0xAARRGGBB with alpha 255, top row first. The skin is scaled by the mean
/// colour of the area below a pixel, within its dot alone; the display's dots are squares. So a
/// pixel's colour is the same, whatever part is composed.
void compose_window(std::span<std::uint32_t> frame, PixelRect rect);

}  // namespace orvanel
