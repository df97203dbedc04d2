// memory_window.h: the window of a program that has none: what window_system.h asks for is kept
// here, for a scenario to look at and to act on as a user would. Main thread.

#pragma once

#include "host/skin/outline.h"
#include "seam/window_system.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvanel {

/// The window as it stands.
struct MemoryWindow {
    int left, top;      // of the screen
    int width, height;  // of the client area, in window pixels
    bool on_top;
    std::string title;
    std::optional<Outline> outline;  // none with a frame
    Pointer pointer;
    std::optional<PixelPoint> mouse;       // where it was last
    std::optional<PixelPoint> dragged_at;  // where a drag of the window took hold of it
    bool left_down;
    std::vector<std::uint8_t> clipboard;  // what it got last, empty for nothing
};
extern MemoryWindow memory_window;

/// Places the window by the settings, in the size of the present view, with a frame.
void open_memory_window();

/// The outline of the window, the whole client area if it isn't cut.
Outline memory_outline();

/// The left button of the mouse, and its moves. A drag of the window takes them while it lasts, and
/// a window with an open dialog hears nothing of them. The screen ends 32768 pixels from its
/// corner.
void memory_mouse_down(int px, int py);
void memory_mouse_move(int px, int py);
void memory_mouse_up(int px, int py);

}  // namespace orvanel
