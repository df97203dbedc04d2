#include "firmware/store/roof/macro_commands.h"

#include "firmware/core/read/read.h"
#include "firmware/store/ground/macro.h"

namespace orvanel {

void run_normal_macro() { start_macro(normal_macro_table, params[0]); }

void run_touch_macro() { start_macro(touch_macro_table, params[0]); }

void run_menu_macro() { start_macro(menu_macro_table, params[0]); }

}  // namespace orvanel
