// instance_client.h: the way to the program that runs in a folder: its lock file says where its
// socket is, and the socket carries the messages of host/bridge/bridge.h.
// docs/reference/formats.md, "Companion".

#pragma once

#include "host/bridge/bridge_packing.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

constexpr std::size_t message_size = 12;  // number, first, second, low byte first
constexpr std::size_t answer_size = 4;    // to each message

/// A message of the carrier itself: brings the window to the front. The answer is 1, or 0 if the
/// program has none.
constexpr std::uint32_t instance_activate = 0x400;

/// How long to wait for the other side, which may have been stopped.
using Deadline = std::chrono::steady_clock::time_point;
constexpr std::chrono::seconds answer_limit{5};  // for a program to show that it is alive
struct Patience {
    Deadline end;  // Deadline::max(): never
    int stop_fd;   // it ends as well when this becomes readable; -1 none
};

/// Connects to the program that runs in the folder and has it answer. The result is a connection,
/// or -1 and `fault` says why: nobody is there, it is a program of another user, or it doesn't
/// answer until then.
int connect_to_instance(const std::string& folder, Deadline end, std::string& fault);

/// Sends messages and takes their answers, so many of each. False if the connection has ended or
/// the patience; the answers that came first stand in `answers`, and the others are 0.
bool ask_instance(int connection, std::span<const BridgeMessage> messages,
                  std::span<std::uint32_t> answers, Patience patience);

/// The bytes of a message, and back.
std::array<std::uint8_t, message_size> message_bytes(BridgeMessage message);
BridgeMessage message_of(std::span<const std::uint8_t> bytes);

/// The user at the other end of a connection is this one, or the system's administrator.
bool peer_is_trusted(int connection);

/// What came of a second start.
enum class HandOver : std::uint8_t { done, nobody, failed };

/// Brings the window of the program that runs in the folder to the front and has it open the file,
/// an absolute path or empty for none. `nobody`: no program answers there until then. `failed`: it
/// has no window, or can't take the name. `fault` says what.
HandOver hand_over(const std::string& folder, const std::string& file, Deadline end,
                   std::string& fault);

}  // namespace orvanel
