#include "firmware/core/roof/loop.h"

#include "firmware/core/ground/requests.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/core/roof/commands.h"
#include "firmware/core/roof/power_on.h"
#include "firmware/raster/planes.h"
#include "firmware/store/ground/macro.h"
#include "firmware/store/roof/timers.h"
#include "firmware/text/terminal.h"
#include "firmware/touch/tracking.h"

#include <cstddef>
#include <cstdint>

namespace orvanel {

namespace {

constexpr std::uint8_t most_idle_passes = 255;

/// Passes at macro depth 0 since the reset; stops at most_idle_passes.
constinit std::uint8_t idle_passes = 0;

/// Starts at most one process macro, the lowest that is due.
void start_due_process() {
    if (idle_passes <= 1 || !macro_processes_enabled) return;
    for (int i = 0; i < static_cast<int>(process_macros.size()); ++i) {
        if ((process_macros[static_cast<std::size_t>(i)].clock.load() & process_due) == 0) continue;
        run_process_macro(i);
        return;
    }
}

/// What the module does between two commands, and only while no macro runs. An idle pass can find
/// only what another thread has left, and who leaves something wakes us. The depth is looked at
/// once: an automatic macro that is due in the same pass nests on top of a process macro and runs
/// first.
void background_work() {
    if (macro_depth > 0) return;
    if (idle_passes < most_idle_passes) ++idle_passes;
    terminal_blink();
    poll_touch();
    start_due_process();
    if (auto_macro_mode.load() != 0 && auto_macro_timer.load() == 0) run_auto_macro();
}

void handle_byte() {
    if (current_byte != lead_in_esc && current_byte != lead_in_hash) {
        trace(TraceKind::text);
        terminal_put(current_byte);
        return;
    }
    trace(TraceKind::begin);
    lead_in = current_byte;
    select_graphics_planes();
    run_command();
    trace(TraceKind::end);
}

}  // namespace

void run_firmware() {
    while (!shutdown_requested.load()) {
        idle_passes = 0;
        reset_cycle();
        while (!breaking_off()) {
            do {
                background_work();
            } while (!read_next_byte());
            if (shutdown_requested.load()) return;
            handle_byte();
        }
    }
}

}  // namespace orvanel
