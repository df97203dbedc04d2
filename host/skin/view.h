// view.h: what is shown and how large: the working set of images by view_rotated, the zoom, and the
// scale of the screen. Main thread.
//
// A dot of the skin is a whole number of window pixels. On a screen whose scale is 1 that is
// view_zoom; with another scale it is the nearest whole number to view_zoom times the scale, and
// window pixels are the device's own.

#pragma once

namespace orvanel {

/// The screen's scale in percent, 100 at the start. The window system sets it and then calls
/// resize_window if the window is there.
extern int screen_scale_percent;

/// Window pixels for each dot of the skin, at least 1. What the rules divide by.
int dot_pixels();

/// The client area in window pixels: the skin's dots, each dot_pixels() wide and high.
int window_width();
int window_height();

}  // namespace orvanel
