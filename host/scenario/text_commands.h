// text_commands.h: the commands that read the glass: texts, terminal rows, and what can be read.

#pragma once

#include "host/scenario/arguments.h"

namespace orvanel {

void print_texts(const Arguments& a);
void expect_text_command(const Arguments& a);
void expect_no_text_command(const Arguments& a);
void await_text_command(const Arguments& a);
void expect_terminal_command(const Arguments& a);

}  // namespace orvanel
