// port.h: what the firmware asks of the serial line. The open port belongs to link_thread; the
// words below are left for it.

#pragma once

#include <atomic>
#include <cstdint>

namespace orvanel {

/// The configured speed in bits a second, the one that a reset brings back. Start value 9600.
extern std::atomic<std::int32_t> com_baud;

/// The speed that the line is to have now.
extern std::atomic<std::int32_t> line_baud;

/// Whether RTS is to be on; acted on when it differs from what was last set.
extern std::atomic<bool> rts_wanted;

/// Sets the line's speed now; com_baud stays.
void com_set_baud(std::int32_t baud);

void com_rts_on();
void com_rts_off();

/// This module's address on the line, 0..255, and whether it is selected.
extern std::atomic<std::uint8_t> configured_address;
extern std::atomic<std::uint8_t> module_address;
extern std::atomic<std::uint8_t> module_selected;

/// Power-on: the configured address; address 7 is selected from the start.
void power_on_link();

}  // namespace orvanel
