// world.h: what a scenario asks of the program that runs it. The clock is module time or the real
// one; each program implements these once, beside platform.h.

#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace orvanel {

/// Microseconds since the firmware began its first reset cycle.
std::int64_t clock_us();

/// Bytes that the read layer has taken from a macro or from rx_pipe so far.
std::uint64_t bytes_delivered();

/// The scenario's next line has yet to come in on `fd`. True once there is something to read; false
/// if the program doesn't stand still for it, or is told to end.
bool wait_for_scenario_input(int fd);

/// Whether the program is told to end, which it otherwise finds out when time passes.
bool is_to_end();

/// Whether reading `fd` gives something at once.
bool scenario_input_is_there(int fd);

/// Between the two the module's own state can be read: its thread stands still, as it always does
/// in module time. No call of one while the other is owed; main thread.
void halt_module();
void resume_module();

/// Halted as long as it lives.
struct ModuleHalt {
    ModuleHalt() { halt_module(); }
    ~ModuleHalt() { resume_module(); }
    ModuleHalt(const ModuleHalt&) = delete;
    ModuleHalt& operator=(const ModuleHalt&) = delete;
};

/// False in real time, where the line's other end is no business of the scenario: then the five
/// functions below aren't called.
bool line_is_simulated();

/// The peer sends: the bytes go into the line's receive queue. What doesn't fit is lost, and all of
/// it while no port is open.
void line_receive(std::span<const std::uint8_t> data);

/// Bytes in the receive queue; 0 in real time.
int line_queued();

/// What has left on the line and was not taken yet.
std::vector<std::uint8_t>& line_sent();

/// The speed at which the peer's bytes come in, in bits a second with ten for each byte; 0, as at
/// the start, for at once.
void set_line_speed_baud(std::int32_t baud);

/// The peer's CTS, on at the start.
void set_line_cts(bool on);

/// Whether the line can be opened, as it can at the start.
void set_line_absent(bool absent);

/// What the module does with RTS, and its speed in bits a second: false and 0 without a port.
bool line_rts();
std::int32_t line_speed();

}  // namespace orvanel
