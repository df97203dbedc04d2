// bridge.h: the messages by which a companion on this machine plays the device at the other end of
// the line, and a second start of the program hands over a file. Main thread. What carries them is
// host/platform/instance/instance.h; their table is in docs/reference/formats.md.

#pragma once

#include "host/bridge/bridge_packing.h"

#include <cstdint>

namespace orvanel {

constexpr int key_ring_size = 64;

/// Serves one message. The result is what its sender gets: bytes from the module packed low byte
/// first, 0xFF for each that is missing; the status word, tx_count in bits 0 to 23 unless a port is
/// chosen and the typed bytes that wait in bits 24 to 31; a typed byte, 0xFFFFFFFF for none; 1 for
/// bridge_introduce; 0 for all else.
std::uint32_t bridge_message(BridgeMessage message);

/// Whether the message makes its sender the companion.
bool makes_companion(std::uint32_t number);

/// The companion has gone. Typed bytes go on being kept for the next one until activate_terminal
/// looks for it.
void companion_gone();

/// Brings the companion to the front. False if there is none; typed bytes are dropped from then on.
bool activate_terminal();

/// A byte that the user typed, for the companion; dropped while none is known or 64 wait.
void key_ring_put(std::uint8_t byte);

/// The oldest typed byte, -1 if none waits.
int key_ring_get();

}  // namespace orvanel
