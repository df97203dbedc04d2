// start_port.h: what stands behind COM1 to COM8 when a program starts, the port that is open from
// the start, and what is spoken there: by the settings, or for this run alone by `--serial`, which
// puts its device behind COM1, and `--protocol`. Main thread, before start_module.

#pragma once

#include <string>

namespace orvanel {

/// What is wrong with the text of `--serial` (serial_name.h), empty if nothing.
std::string serial_option_fault(const std::string& serial);

/// Names the devices to the serial line: those of the settings, with links in `folder` (empty: no
/// links), and `serial` behind COM1, if it isn't empty.
void name_devices(const std::string& serial, const std::string& folder);

/// What is wrong with the text of `--protocol`, empty if nothing; and what it has the line speak,
/// none for an empty text, which leaves that to the settings.
std::string protocol_option_fault(const std::string& protocol);
void take_protocol_option(const std::string& protocol);

/// The port to open: COM1 for `--serial`, else that of the settings, 0 for none.
int start_port(const std::string& serial);

/// Whether it is `--serial` that has this port opened.
bool is_by_option(int port, const std::string& serial);

/// Chooses the port, at the speed that its device's name asks for, else 115200 for `serial` and the
/// setting for others. The result tells why it can't be opened, empty if it is open or none is
/// wanted. The user learns that much, and the program may go on without.
std::string open_start_port(int port, const std::string& serial);

/// The name by which the peer finds the open port, where the user doesn't know it: of a pseudo
/// terminal, and of a TCP port that was left to the system. Else empty.
std::string new_peer_name(const std::string& serial);

}  // namespace orvanel
