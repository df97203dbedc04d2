// settings.h: what the user has chosen and the module asks about.

#pragma once

#include <atomic>

namespace orvanel {

/// The touch beep is heard. Start value: off.
extern std::atomic<bool> beep_on;

}  // namespace orvanel
