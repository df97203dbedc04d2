// read.h: the read layer. Every byte of the command language comes through here, whatever its
// source: a running macro goes before rx_pipe. All of it runs on firmware_thread.

#pragma once

#include "firmware/core/language/reads.h"

#include <array>
#include <cstdint>

namespace orvanel {

/// The byte last delivered; every read operation leaves its result here.
extern std::uint8_t current_byte;

/// The byte that opened the running command, lead_in_esc or lead_in_hash.
extern std::uint8_t lead_in;

/// Reads of a command in front of its handler.
constexpr int max_reads = 6;

/// The values of the running command's p, zoom and bar reads, in their order; points go to
/// draw_area and take no place here.
extern std::array<std::uint8_t, max_reads> params;

/// Reads what the list says, in its order, up to Read::none. Raw ones are the handler's.
void read_params(const std::array<Read, max_reads>& reads);

/// How an attempt that finds no byte sleeps.
enum class Idle : bool {
    until_woken,  // whoever leaves something to do wakes us; 5 ms in module time
    one_pass,     // 5 ms on either clock: something is due, and nobody wakes us for it
};

/// One attempt: true if current_byte holds a new byte. After a tick it sleeps 5 ms first. While a
/// restart or the shutdown is pending it gives 0 and true at once.
bool read_next_byte(Idle idle = Idle::until_woken);

/// The next byte, raw, whatever the lead-in. Waits for it.
std::uint8_t read_byte();

/// The next byte with 'a' to 'z' upper-cased, in current_byte too.
std::uint8_t read_letter();

/// The ASCII number of the '#' lead-in: decimal, or hexadecimal after '$'. Wraps at 32 bits.
/// Takes the one byte after the last digit, whatever it is.
std::uint32_t read_number();

/// One parameter, in the form that lead_in asks for, cut to 8 bits.
std::uint8_t read_param();

/// Two parameters each into draw_area: x clamped to 239, y to 127.
void read_point1();
void read_point2();

/// x1, y1, x2, y2 into draw_area: first clamped, then ordered.
void read_rect();

/// 1 to 4: 1..4 stay, 5 gives 1, 0 gives 4. A wrap, where other readers clamp.
std::uint8_t read_zoom();

/// 0 to 31 for bar 1 to 32; 33 gives 0 again, 0 gives 31.
std::uint8_t read_bar_index();

}  // namespace orvanel
