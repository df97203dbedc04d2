// bridge.h: the messages by which a companion on this machine plays the device at the other end of
// the line, and a second start of the program hands over a file. Main thread. The carrier, a local
// socket, is the platform's; the format of both is in docs/formats.md.

#pragma once

#include <cstdint>
#include <span>

namespace orvanel {

/// Packs up to six bytes into the two parameters of a message: b0 and b2 into `first`, b1, b3, b4
/// and b5 into `second`, low byte first; and back.
struct BridgeParameters {
    std::uint32_t first, second;
};
BridgeParameters bridge_pack(std::span<const std::uint8_t> data);
void bridge_unpack(BridgeParameters parameters, std::span<std::uint8_t> into);

/// Serves one message; numbers 0x401 to 0x428, any other gives 0. `is_companion`, unless null, is
/// set to true if the message makes its sender the companion.
std::uint32_t bridge_message(std::uint32_t number, BridgeParameters parameters,
                             bool* is_companion = nullptr);

/// A companion is known. A carrier says so when its connection has made itself known, and leaves it
/// set when that ends.
extern bool terminal_known;

/// A byte that the user typed, for the companion; dropped while none is known or 64 wait.
void key_ring_put(std::uint8_t byte);

/// The oldest typed byte, -1 if none waits.
int key_ring_get();

}  // namespace orvanel
