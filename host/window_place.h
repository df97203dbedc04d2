// window_place.h: where the window stands on the screen, in the words window_x and window_y of
// settings.h. Main thread.

#pragma once

#include "host/platform/platform.h"

#include <span>

namespace orvanel {

/// A window of `width` x `height` pixels that would be on none of the screens, as when one was
/// taken away, comes back to the first of them. There is at least one.
void bring_window_back(std::span<const PixelRect> screens, int width, int height);

/// The user has moved the window. Partly above or left of the first screen counts as 0, 0.
void window_moved(int x, int y);

}  // namespace orvanel
