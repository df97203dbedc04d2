// line_summary.h: how the serial line does, in words for the user: the sign of life that the window
// shows.

#pragma once

#include <string>

namespace orvanel {

/// Port, speed and protocol, what has passed, and whether the module is selected; some lines of
/// text. From any thread.
std::string line_summary();

}  // namespace orvanel
