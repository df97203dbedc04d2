#include "host/host_calls.h"

namespace orvanel {

void colours_changed() {}
void start_fade_timer() {}
void stop_fade_timer() {}
void show_message(std::string_view, std::string_view) {}
void beep() {}
void show_ports() {}

}  // namespace orvanel
