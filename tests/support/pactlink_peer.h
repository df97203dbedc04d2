// pactlink_peer.h: the device at the other end of the line, speaking Pactlink, on a line that
// spoils bytes. What is spoilt is drawn from a seed: bytes dropped, flipped, doubled, delayed, in
// the frames to the module and in its answers. ACK and NAK come through, and no damage leaves a
// frame whose sum fits, since frames carry no number that would tell of it.

#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <random>
#include <span>

namespace orvanel {

/// Adds start byte, length and sum.
Bytes frame_of(std::uint8_t start, std::span<const std::uint8_t> payload);

struct PactlinkPeer {
    int line;            // its end of the line
    int faults_percent;  // of the frames in either direction
    std::mt19937 random;

    // What has happened.
    int frames, spoilt_frames, delayed_frames, refused_frames;
    int answers, spoilt_answers;
};

/// Sends a frame until the module acknowledges it: once, unless the line spoils it or the module
/// has no room.
void send_frame(PactlinkPeer& peer, std::span<const std::uint8_t> frame);

/// Sends a command and gives the payload of its answer, repeated until it comes through.
Bytes ask(PactlinkPeer& peer, std::span<const std::uint8_t> command);

}  // namespace orvanel
