// input.h: the mouse over the window: a finger on the glass, else a hand that moves the window or
// opens the menu; and the pointer that shows which. All on the host's main thread; positions are
// pixels of the client area and may lie outside it. The mouse isn't captured.

#pragma once

namespace orvanel {

/// Whether a pixel lies on the glass.
bool glass_hit(int px, int py);

/// The dot of the module under a pixel of the glass.
struct ModuleDot {
    int x, y;  // 0..239, 0..127
};
ModuleDot glass_to_module(int px, int py);

/// The left button went down, the mouse moved, the left button went up. A drag off the glass lifts
/// the finger; a press off it begins a drag of the window.
void mouse_down(int px, int py);
void mouse_move(int px, int py, bool left_down);
void mouse_up(int px, int py);

/// The right button went down: the menu opens there.
void right_mouse_down(int px, int py);

/// Shows the pointer that a place asks for: an arrow on the glass, a hand over a touch area there,
/// else the sign for moving the window.
void cursor_update(int px, int py);

/// The same at the present place of the mouse, if the touch table has changed since the last time.
void cursor_look_again();

}  // namespace orvanel
