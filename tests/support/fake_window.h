// fake_window.h: the window system as the tests of the host see it: nothing shows, and what a test
// may ask about is kept.

#pragma once

#include "host/skin/outline.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orvanel {

struct FakeWindow {
    std::optional<Outline> outline;  // none with a frame
    std::string title;
    std::uint32_t activated;  // the number of another program's window, 0 for none
};
extern FakeWindow fake_window;

}  // namespace orvanel
