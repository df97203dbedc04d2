// boxes.h: the boxes of a start and an end, when there is no module's window and no event loop. The
// others are asked for by seam/window_system.h.

#pragma once

#include <string_view>

namespace orvanel {

/// Shows a fault, as plain text whatever stands in it, and returns when the user has closed the
/// box.
void show_fault_box(std::string_view caption, std::string_view text);

}  // namespace orvanel
