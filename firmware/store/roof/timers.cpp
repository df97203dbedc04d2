#include "firmware/store/roof/timers.h"

#include "base/bytes.h"
#include "firmware/core/ground/backlight.h"
#include "firmware/core/ground/requests.h"
#include "firmware/core/ground/tick_counter.h"
#include "firmware/core/ground/tone.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/raster/refresh.h"
#include "firmware/store/ground/macro.h"
#include "firmware/text/terminal.h"
#include "link/ground/port.h"
#include "seam/platform.h"

#include <algorithm>

namespace orvanel {

constinit std::array<AutoMacroTimer, 4> process_macros{};
constinit bool macro_processes_enabled = false;
constinit std::atomic<std::uint8_t> auto_macro_timer{0};

namespace {

/// The automatic macro but for its mode, which other threads clear: auto_macro_mode.
constinit MacroSequence auto_macro{};
constinit std::uint8_t auto_macro_period = 0;

/// Steps after a start. True if that ends the sequence; then nothing else has changed.
bool step_sequence(MacroSequence& s) {
    switch (s.mode) {
    case 1:
        s.current = s.current == s.high ? s.low : low8(s.current + 1);
        break;
    case 2:
        s.current = s.current == s.low ? s.high : low8(s.current - 1);
        break;
    case 3:
        // With low = high the step goes past it and comes back after 256 steps.
        s.current = low8(s.current + 1);
        if (s.current == s.high) s.mode = 4;
        break;
    case 4:
        s.current = low8(s.current - 1);
        if (s.current == s.low) s.mode = 3;
        break;
    case 5:
        if (s.current == s.high) return true;
        s.current = low8(s.current + 1);
        break;
    case 6:
        if (s.current == s.low) return true;
        s.current = low8(s.current - 1);
        break;
    default:
        break;
    }
    return false;
}

/// From macro a to macro b: the odd mode `up`, or the even one after it for b below a.
MacroSequence sequence_from(std::uint8_t a, std::uint8_t b, std::uint8_t up) {
    return {low8(b >= a ? up : up + 1), std::min(a, b), std::max(a, b), a};
}

void start_automatic(std::uint8_t up) {
    auto_macro = sequence_from(params[0], params[1], up);
    auto_macro_period = params[2];
    auto_macro_mode.store(auto_macro.mode);
    run_auto_macro();
}

void tick_flash() {
    if (!count_down(flash_timer)) return;
    const std::uint8_t period = flash_period.load();
    if (period == 0) return;
    // ESC Q Z may have set the timer since it ran out; its value stands.
    std::uint8_t run_out = 0;
    flash_timer.compare_exchange_strong(run_out, period);
    flash_phase.fetch_xor(1);
    // ESC Q Z writes the period before it looks at the phase: either it finds the new phase, or we
    // find its period here.
    if (flash_period.load() == 0) flash_phase.store(0);
    repaint_all();
}

void tick_process(AutoMacroTimer& process) {
    std::uint16_t seen = process.clock.load();
    while ((seen & 0xFF) >= 1 && (seen & 0xFF) <= 127) {
        auto next = static_cast<std::uint16_t>(seen - 1);
        if ((next & 0xFF) == 0) next |= process_due;
        if (process.clock.compare_exchange_weak(seen, next)) return;
    }
}

}  // namespace

void power_on_timers() {
    auto_macro = {};
    auto_macro_period = 0;
    auto_macro_timer.store(0);
    for (AutoMacroTimer& process : process_macros) {
        process.sequence = {};
        process.period = 0;
        process.clock.store(0);
    }
    macro_processes_enabled = true;
    beep_timer.store(0);
}

void run_auto_macro() {
    start_macro(normal_macro_table, auto_macro.current);
    std::uint8_t seen = auto_macro_mode.load();
    auto_macro.mode = seen;
    const bool ended = step_sequence(auto_macro);
    // The line may have ended the sequence since we looked; a step must not bring it back.
    if (seen != 0) auto_macro_mode.compare_exchange_strong(seen, ended ? 0 : auto_macro.mode);
    if (auto_macro_mode.load() != 0) auto_macro_timer.store(auto_macro_period);
}

void run_process_macro(int i) {
    AutoMacroTimer& process = process_macros[static_cast<std::size_t>(i)];
    MacroSequence& sequence = process.sequence;
    start_macro(normal_macro_table, sequence.current);
    if (step_sequence(sequence)) {
        // Ready to start again from where it began, when ESC M Z gives it a new period.
        process.period = 0;
        sequence.current = sequence.mode == 5 ? sequence.low : sequence.high;
    }
    process.clock.store(process.period);
}

void auto_macro_cyclic() { start_automatic(1); }
void auto_macro_to_and_fro() { start_automatic(3); }
void auto_macro_once() { start_automatic(5); }

void delayed_macro() {
    auto_macro = sequence_from(params[0], params[0], 5);
    auto_macro_period = params[1];
    auto_macro_timer.store(params[1]);
    auto_macro_mode.store(auto_macro.mode);
}

void define_process_macro() {
    const auto [number, kind, a, b, period, unused] = params;
    if (number < 1 || number > process_macros.size())
        return remark(Remark::missing_process, number);
    AutoMacroTimer& process = process_macros[number - 1U];
    constexpr std::array<std::uint8_t, 4> mode_of_kind{5, 5, 1, 3};
    process.sequence = sequence_from(a, b, mode_of_kind[masked(kind, 3)]);
    process.period = period;
    process.clock.store(period);
}

void set_process_period() {
    const auto number = params[0];
    const auto period = params[1];
    if (number < 1 || number > process_macros.size())
        return remark(Remark::missing_process, number);
    AutoMacroTimer& process = process_macros[number - 1U];
    if (process.sequence.mode == 0) return;
    process.period = period;
    // Only a period of 0 calls off a run that is already due.
    std::uint16_t seen = process.clock.load();
    while (!process.clock.compare_exchange_weak(
        seen, static_cast<std::uint16_t>(period == 0 ? 0 : period | (seen & process_due)))) {
    }
}

void enable_process_macros() { macro_processes_enabled = masked(params[0], 1) != 0; }

void firmware_tick() {
    if (!tick_enabled.load()) return;
    tick_fade();
    tick_frame_timeout();
    count_down(blink_timer);
    count_down(auto_macro_timer);
    count_down(beep_timer);
    tick_flash();
    tick_backlight_limit();
    for (AutoMacroTimer& process : process_macros)
        tick_process(process);
    tick_yield_pending.store(true);
    wake_firmware();
}

}  // namespace orvanel
