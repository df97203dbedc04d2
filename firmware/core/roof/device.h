// device.h: the commands that ask or configure the module as a device and draw nothing.

#pragma once

#include <atomic>
#include <cstdint>

namespace orvanel {

/// The module's output lines, bit 0 = line 1.
extern std::atomic<std::uint8_t> output_port;

/// What the ports panel shows: the inverse of output_port as of the last ESC Y W. A reset leaves
/// it, and so the panel, as it was.
extern std::atomic<std::uint32_t> ports_shown;

/// All eight lines := v for p & 15 = 0; else line (p - 1) & 7 by v & 3: off, on, inverted, left.
void set_output_port(std::uint8_t p, std::uint8_t v);

/// Power-on: all lines on.
void power_on_device();

// Handlers.
void identify();
void set_line_speed();
void wait_command();
void set_address();
void send_bytes();
void send_information();
void send_version();
void beep_command();
void output_port_command();
void set_brightness();
void switch_backlight();

}  // namespace orvanel
