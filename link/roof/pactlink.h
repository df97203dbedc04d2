// pactlink.h: the framed protocol, in which the module speaks only when it is asked. A frame is
// start byte, length n, n bytes of payload and the sum of all these modulo 256; the module answers
// each with one byte and, for four commands, a frame. All of it belongs to link_thread, but for the
// words in link/ground/port.h. The page for users is docs/reference/pactlink.md.

#pragma once

#include "link/roof/com_port.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvanel {

constexpr std::uint8_t frame_data = 0x11;     // start bytes
constexpr std::uint8_t frame_control = 0x12;  //
constexpr std::uint8_t frame_ack = 0x06;      // answers of one byte
constexpr std::uint8_t frame_nak = 0x15;      //
constexpr std::size_t max_answer = 64;        // payload bytes of an answer frame

/// The answer frame built last, whole, and its length byte. It stays for the command R until the
/// next one is built, whatever comes between. Zeros at program start.
struct AnswerFrame {
    std::array<std::uint8_t, max_answer + 3> bytes;
    std::uint8_t answer_payload_length;
};
extern AnswerFrame answer_frame;

/// The receiver, one call for each byte from the line. The last byte of a frame leaves
/// frame_progress at FrameState::complete, where further bytes are ignored until the frame has been
/// handled.
void frame_receive_byte(std::uint8_t byte);

/// Handles the frame just completed: selects, answers, carries it out; or drops it without a word
/// if the module is not selected. The receiver is then ready for the next one.
void handle_frame();

/// One turn of frames: reads as much as one frame of an answer's size, and handles what is
/// complete.
TurnWait framed_turn();

}  // namespace orvanel
