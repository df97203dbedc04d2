// window_place.h: where windows stand on the screen; the main one's place is in window_x and
// window_y of settings.h. Main thread.

#pragma once

#include "seam/window_system.h"

#include <span>

namespace orvanel {

/// Where a window of `width` x `height` pixels goes that asks for the place `at`: there, or if it
/// would be on none of the screens, as when one was taken away, on the first of them. There is at
/// least one.
PixelPoint brought_back(PixelPoint at, int width, int height, std::span<const PixelRect> screens);

/// The user has moved the window. Partly above or left of the first screen counts as 0, 0.
void window_moved(int x, int y);

}  // namespace orvanel
