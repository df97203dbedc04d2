// led.h: lights that are drawn from one strip of images. The library knows nothing of ports. A
// light is known by its handle, its place in the array from 1 on, until led_reset. Main thread.

#pragma once

#include <span>

namespace orvanel {

/// Image offsets: the image of a light is number shape + colour + state of the strip.
enum LedColour : int { led_red = 0, led_green = 2, led_yellow = 4, led_blue = 6, led_grey = 8 };
enum LedShape : int {
    led_circular = 0,
    led_low_bar = 9,  // with bevel
    led_square = 18,  // with bevel
    led_flat_low_bar = 27,
    led_flat_upright_bar = 36,
};
enum LedState : int { led_lit = 0, led_dark = 1 };

struct LedControl {
    int x, y;    // upper left corner in the window
    int window;  // 0 for none; the numbers are those of window_system.h
    int colour, shape, state;
};

/// Forgets all lights and makes the images ready.
void led_init();

/// Forgets all lights and the images.
void led_reset();

/// Adds a light and gives its handle. A grey one is always in state 0.
int led_add(int window, int x, int y, int shape, int colour, int state);

/// Draws it in its window; nothing for a bad handle or without a window.
void led_draw(int handle);
void led_draw_many(std::span<const int> handles);

// Each of these gives the field's former value, or -1 for a bad handle, and changes nothing then.

/// Turns the state and draws.
int led_toggle(int handle);

// These don't draw.
int led_set_state(int handle, int state);
int led_set_colour(int handle, int colour);
int led_set_shape(int handle, int shape);
int led_set_window(int handle, int window);
int led_set_x(int handle, int x);
int led_set_y(int handle, int y);

}  // namespace orvanel
