// view.h: what is shown and how large: the working set of images by view_rotated, the zoom, and the
// scale of the screen. Main thread.
//
// A dot of the skin is a whole number of window pixels. On a screen whose scale is 1 that is
// view_zoom; with another scale it is the nearest whole number to view_zoom times the scale, and
// window pixels are the device's own.

#pragma once

#include "host/skin/display.h"
#include "host/skin/skin.h"
#include "seam/platform.h"

#include <string>

namespace orvanel {

/// The working set: the skin and the display in each flash phase, all three upright or turned.
/// Their `area` is in skin dots. Without a size until prepare_view.
extern const SkinImage* view_skin;
extern const Display* view_lcd;
extern const Display* view_lcd_flash;

/// Points the working set at the images that view_rotated asks for.
void choose_view();

/// Unpacks and analyses the built-in skin, chooses the view by view_rotated and gives it the
/// colours of skin_model: all that compose_window needs. The result is empty on success, else
/// what is wrong. Behind take_settings, before the window is made.
std::string prepare_view();

/// The screen's scale in percent, 100 at the start. The window system sets it and then calls
/// resize_window if the window is there.
extern int screen_scale_percent;

/// Window pixels for each dot of the skin, at least 1. What the rules divide by.
int dot_pixels();

/// The client area in window pixels: the skin's dots, each dot_pixels() wide and high.
int window_width();
int window_height();

/// Where the window shows the dots x1..x2, y1..y2 of the module's display, all inclusive and on the
/// glass.
PixelRect display_pixels(int x1, int y1, int x2, int y2);

}  // namespace orvanel
