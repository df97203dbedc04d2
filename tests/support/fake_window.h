// fake_window.h: the window system as the tests of the host see it: nothing shows, and what a test
// may ask about is kept.

#pragma once

#include "host/skin/outline.h"
#include "seam/window_system.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvanel {

/// A light as it was drawn.
struct DrawnLight {
    int window;
    PixelPoint at;
    std::vector<std::uint32_t> pixels;
};

struct FakeWindow {
    std::optional<Outline> outline;  // none with a frame
    std::string title;
    std::uint32_t activated;         // the number of another program's window, 0 for none
    std::vector<DrawnLight> lights;  // all that were drawn, the last one last
    int beeps;
    int repaints;                    // of the whole window
    std::vector<bool> fades;         // what the fade timer was set to, the last one last
    std::vector<std::string> boxes;  // the texts of all that were opened
};
extern FakeWindow fake_window;

}  // namespace orvanel
