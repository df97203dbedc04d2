// What the program asks of the system, where there is none but files and streams: no signals, no
// ports.

#include "host/platform/headless/end_signals.h"
#include "host/platform/serial/serial_line.h"

namespace orvanel {

void take_end_signals() {}

bool told_to_end() { return false; }

int end_signals_fd() { return -1; }

// Reading waits by itself.
bool wait_for_input(int /*fd*/) { return true; }

bool input_is_there(int /*fd*/) { return true; }

// In module time one simulated line stands behind every port.
std::string serial_fault;

void set_serial_device(int /*port*/, std::string_view /*text*/) {}

void set_serial_folder(std::string /*folder*/) {}

std::string serial_peer_name(int /*port*/) { return {}; }

}  // namespace orvanel
