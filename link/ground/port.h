// port.h: the words by which the other threads and the serial line speak to each other. The open
// port belongs to link_thread; it finds here what is asked of it and tells here how it goes.
// Whoever changes what is asked wakes it.

#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace orvanel {

/// The speeds of the line in bits a second, by the number that `ESC +` has for each.
inline constexpr std::array<std::int32_t, 8> line_speeds{1200,  2400,  4800,  9600,
                                                         19200, 38400, 57600, 115200};

/// The chosen port: 1..8 for COM1 to COM8, 0 for none, -1 until the settings are applied.
extern std::atomic<std::int32_t> com_port;

/// The configured speed in bits a second, the one that a reset brings back. Start value 9600.
extern std::atomic<std::int32_t> com_baud;

/// The speed that the line is to have now.
extern std::atomic<std::int32_t> line_baud;

/// Whether RTS is to be on; acted on when it differs from what was last set.
extern std::atomic<bool> rts_wanted;

/// The line speaks Pactlink; else plain bytes. Whoever changes it calls wake_link.
extern std::atomic<bool> protocol_on;

/// Sets the line's speed now; com_baud stays.
void com_set_baud(std::int32_t baud);

/// Sets it back to the configured one. The caller wakes link_thread, or is it.
void com_restore_baud();

void com_rts_on();
void com_rts_off();

/// This module's address on the line, 0..255, and whether it is selected.
extern std::atomic<std::uint8_t> configured_address;
extern std::atomic<std::uint8_t> module_address;
extern std::atomic<bool> module_selected;

/// How far a frame has come in.
enum class FrameState : std::uint8_t {
    start = 1,     // waiting for a start byte
    length = 2,    // waiting for the length
    payload = 3,   // in the payload
    sum = 4,       // waiting for the checksum
    complete = 16  // all there, and about to be handled
};

/// State and time limit of the frame that is coming in. The limit's end changes both: one word.
struct alignas(2) FrameProgress {  // its size: clang's atomics need that to work inline
    FrameState frame_state;
    std::uint8_t frame_timeout;  // 10 ms units until the frame is dropped, 0: no limit runs
};
extern std::atomic<FrameProgress> frame_progress;

/// What each byte of a frame sets the limit to, in units of 10 ms; 0: frames have no limit.
extern std::atomic<std::uint8_t> frame_timeout_reload;

/// The most payload bytes in an answer frame, 0..64.
extern std::atomic<std::uint8_t> packet_size;

/// What has passed since the program started: bytes of either mode; frames with a right checksum
/// that could be taken, and others.
extern std::atomic<std::uint64_t> line_bytes_in;

/// The bytes that came in last, the one that line_bytes_in counts as n at n - 1 modulo the size.
/// The link writes them before it counts them.
extern std::array<std::atomic<std::uint8_t>, 65536> line_bytes_seen;

extern std::atomic<std::uint64_t> line_bytes_out;
extern std::atomic<std::uint64_t> frames_good;
extern std::atomic<std::uint64_t> frames_bad;

/// Bytes that tx_pipe had no room for since the program started: nobody took the answers.
extern std::atomic<std::uint64_t> answer_bytes_dropped;

/// The tick's share, each 100 ms: takes 10 off a limit that runs. At 0 the frame is dropped without
/// a word.
void tick_frame_timeout();

/// Power-on: the configured address; address 7 is selected from the start. No frame is coming in,
/// and frames and answers have their usual limits.
void power_on_link();

}  // namespace orvanel
