// painting.h: composing what the window shows into one 32-bit picture, without a toolkit.

#pragma once

#include "host/platform/platform.h"

#include <cstdint>
#include <span>

namespace orvanel {

/// The client area of the window in pixels.
int window_width();
int window_height();

/// Composes the part `rect` (cut to the window, then widened to whole dots) of the client area in
/// the present flash phase. `frame` holds window_width() * window_height() pixels, 0xAARRGGBB, top
/// row first.
void compose_window(std::span<std::uint32_t> frame, PixelRect rect);

}  // namespace orvanel
