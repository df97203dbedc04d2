// module_tables.h: the commands that print the module's tables: touch areas, bars, menu rows.

#pragma once

#include "host/scenario/arguments.h"

namespace orvanel {

void print_areas(const Arguments& a);
void print_bars(const Arguments& a);
void print_menu_rows(const Arguments& a);

}  // namespace orvanel
