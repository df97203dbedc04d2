// window_input.h: the mouse over the window, as a finger on the glass. All on the host's main
// thread; positions are pixels of the client area and may lie outside it.

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
/// the finger.
void mouse_down(int px, int py);
void mouse_move(int px, int py, bool left_down);
void mouse_up(int px, int py);

/// Puts the finger on a dot or lifts it, and lets the firmware look at once.
void press_glass(ModuleDot dot);
void release_glass();

}  // namespace orvanel
