// loop.h: the body of firmware_thread.

#pragma once

namespace orvanel {

/// Resets the module and runs its command loop, again and again, until shutdown_requested is set.
void run_firmware();

}  // namespace orvanel
