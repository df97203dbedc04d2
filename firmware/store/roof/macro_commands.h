// macro_commands.h: starting a macro over the line. An empty one is ignored.

#pragma once

namespace orvanel {

// Handlers of group M; the timed ones are in timers.h.
void run_normal_macro();
void run_touch_macro();
void run_menu_macro();

}  // namespace orvanel
