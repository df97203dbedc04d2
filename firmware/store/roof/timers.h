// timers.h: the module's time base, a tick of 100 ms, and the macros that run by time: one
// automatic macro, which ends as soon as the world outside speaks, and four process macros, which
// run whatever it says. The tick only counts; the macros are started by the command loop.

#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace orvanel {

/// The tick, and the unit of the commands that count time in tenths of a second.
constexpr int tick_ms = 100;

/// A sequence of normal macros. Modes: 1 cyclic upward, 2 cyclic downward, 3 to and fro going up,
/// 4 going down, 5 once upward, 6 once downward; 0 never defined.
struct MacroSequence {
    std::uint8_t mode;
    std::uint8_t low;      // the smaller of the two macro numbers
    std::uint8_t high;     // the larger
    std::uint8_t current;  // the macro that runs next
};

/// A process macro. `clock` holds what the tick and the firmware both write, in one word so that
/// neither undoes the other: the countdown in ticks in its low byte, counted as a signed value (128
/// and more stand still), and process_due above it.
struct AutoMacroTimer {
    MacroSequence sequence;
    std::uint8_t period;  // ticks, 0: stopped
    std::atomic<std::uint16_t> clock;
};
constexpr std::uint16_t process_due = 0x100;

/// Numbered 0..3 here and 1..4 in the commands.
extern std::array<AutoMacroTimer, 4> process_macros;

/// Process macros may start; their clocks run in any case.
extern bool macro_processes_enabled;

/// Ticks until the automatic macro runs, while auto_macro_mode (macro.h) is not 0.
extern std::atomic<std::uint8_t> auto_macro_timer;

/// Starts the automatic macro's next macro and steps its sequence.
void run_auto_macro();

/// Starts the next macro of process i, 0..3, steps its sequence and reloads its countdown.
void run_process_macro(int i);

/// Serves all counters, in a fixed order. Called on the host's main thread every 100 ms, after the
/// feeds' share.
void firmware_tick();

/// Power-on: no sequence, all timers 0, process macros on.
void power_on_timers();

// Handlers of the timed commands of group M.
void auto_macro_cyclic();
void auto_macro_to_and_fro();
void auto_macro_once();
void delayed_macro();
void define_process_macro();
void set_process_period();
void enable_process_macros();

}  // namespace orvanel
