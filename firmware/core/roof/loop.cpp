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

constexpr std::uint8_t max_idle_passes = 255;

/// Passes at macro depth 0 since the reset; stops at max_idle_passes.
constinit std::uint8_t idle_passes = 0;

/// Starts the lowest process macro that is due, one in a pass. True if another one stays due.
bool start_due_process() {
    if (!macro_processes_enabled) return false;
    // The first pass after a reset starts none: what came due while the power-on macro ran waits
    // for one look at the finger and at the input, so a byte that is there already goes before it.
    bool may_start = idle_passes > 1;
    for (int i = 0; i < static_cast<int>(process_macros.size()); ++i) {
        if ((process_macros[static_cast<std::size_t>(i)].clock.load() & process_due) == 0) continue;
        if (!may_start) return true;
        run_process_macro(i);
        may_start = false;
    }
    return false;
}

bool auto_macro_due() { return auto_macro_mode.load() != 0 && auto_macro_timer.load() == 0; }

/// What the module does between two commands, and only while no macro runs. The depth is looked at
/// once: an automatic macro that is due in the same pass nests on top of a process macro and runs
/// first. Says how to idle after it: a macro whose number is empty starts nothing, and then what
/// is due next waits for the next pass, for which nobody wakes us.
Idle background_work() {
    if (macro_depth > 0) return Idle::until_woken;
    if (idle_passes < max_idle_passes) ++idle_passes;
    terminal_blink();
    poll_touch();
    const bool process_left = start_due_process();
    if (auto_macro_due()) run_auto_macro();
    return process_left || auto_macro_due() ? Idle::one_pass : Idle::until_woken;
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
            while (!read_next_byte(background_work())) {
            }
            if (shutdown_requested.load()) return;
            handle_byte();
        }
    }
}

}  // namespace orvanel
