// requests.h: the words by which the host and the tick speak to the firmware. Each is a single
// atomic word with one meaning; docs/inside/threads.md lists who writes and who reads it.

#pragma once

#include <atomic>
#include <cstdint>

namespace orvanel {

/// The power-on macro of the next reset, 0..3. Written before restart_requested; outlives the
/// reset.
extern std::atomic<std::uint8_t> reset_kind;

/// Ends the inner cycle of the command loop: every read gives 0 at once until power_on_defaults
/// clears it.
extern std::atomic<bool> restart_requested;

/// Ends firmware_thread: every read gives 0 at once, sleeps return early, and nothing that would
/// outlive the program is changed any more. Never cleared once the program is told to end.
extern std::atomic<bool> shutdown_requested;

/// firmware_tick does nothing while this is false. Set at the end of each reset cycle, cleared by
/// the restart that ESC & E asks for.
extern std::atomic<bool> tick_enabled;

/// Set by each tick; makes the next read sleep 5 ms, so that a full source doesn't starve the
/// host.
extern std::atomic<bool> tick_yield_pending;

/// Program start: the first reset is of kind 0, and no tick has come.
void cold_start_requests();

/// Asks for a reset of `kind` 0..3, as the reset menu does. Nothing waits for it to happen.
void request_restart(std::uint8_t kind);

/// True when every wait and every loop that a reset ends has to end.
bool breaking_off();

}  // namespace orvanel
