// start_port.h: what stands behind COM1 to COM8 when a program starts, and the port that is open
// from the start: by the settings, or by `--serial`, which puts its device behind COM1 for this run
// alone. Main thread, before start_module.

#pragma once

#include <string>

namespace orvanel {

/// What is wrong with the text of `--serial` (serial_name.h), empty if nothing.
std::string serial_option_fault(const std::string& serial);

/// Names the devices to the serial line: those of the settings, with links in `folder` (empty: no
/// links), and `serial` behind COM1, if it isn't empty.
void name_devices(const std::string& serial, const std::string& folder);

/// Chooses the port, at the speed that its device's name asks for, else 115200 for `serial` and the
/// setting for others. The result tells why it can't be opened, empty if it is open or none is
/// wanted. The user has been told that much, and the program may go on without.
std::string open_start_port(const std::string& serial);

/// The name by which the peer finds the open port, where the user doesn't know it: of a pseudo
/// terminal, and of a TCP port that was left to the system. Else empty.
std::string new_peer_name(const std::string& serial);

}  // namespace orvanel
