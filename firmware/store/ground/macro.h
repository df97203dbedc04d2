// macro.h: macros put the image in the place of the line: while one runs, the read layer takes its
// bytes from here. All on firmware_thread.

#pragma once

#include "firmware/core/ground/trace.h"
#include "firmware/core/language/eeprom_layout.h"

#include <atomic>
#include <cstdint>

namespace orvanel {

constexpr int max_macro_depth = 8;

/// Active levels, 0..max_macro_depth. 0: no macro runs.
extern std::uint8_t macro_depth;

/// The stepping mode of the automatic macro, 0 off. Cleared by firmware_thread, by link_thread and
/// by the host's main thread: a byte from outside ends the sequence.
extern std::atomic<std::uint8_t> auto_macro_mode;

/// Makes the macro the source of the next read. `table` is one of the macro tables of the
/// image. False, and
/// nothing changed, if the record is empty or the stack is full. Reads no byte of the macro.
bool run_macro(std::uint16_t table, std::uint8_t index);

/// As run_macro, for a macro that is expected to be there: a missing one is remarked.
void start_macro(std::uint16_t table, std::uint8_t index);

/// For a trace: where next_macro_byte takes its byte from. Only while macro_depth is above 0.
ByteSource next_macro_source();

/// The next byte of the innermost macro, 0 where its record points outside the image. The level
/// ends in the call that delivers its last byte, so that a start command at a macro's end doesn't
/// deepen the stack. Only while macro_depth is above 0.
std::uint8_t next_macro_byte();

/// Power-on: no macro runs, the automatic macro is off.
void power_on_macros();

}  // namespace orvanel
