// window_commands.h: the commands of the scenario language that act on the window and its boxes as
// a user would, and those that tell what the user would see. The table is in commands.h.

#pragma once

#include "host/scenario/arguments.h"

namespace orvanel {

void mouse_down_command(const Arguments& a);
void mouse_move_command(const Arguments& a);
void mouse_up_command(const Arguments& a);
void key_command(const Arguments& a);
void menu_item_command(const Arguments& a);
void drop_command(const Arguments& a);
void dialog_command(const Arguments& a);

void save_window_command(const Arguments& a);
void save_outline_command(const Arguments& a);
void save_clipboard_command(const Arguments& a);
void print_title(const Arguments& a);
void print_cursor(const Arguments& a);
void print_panel(const Arguments& a);
void print_geometry(const Arguments& a);
void print_mark(const Arguments& a);

}  // namespace orvanel
