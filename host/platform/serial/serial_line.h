// serial_line.h: the serial line of platform.h for programs that run in real time: devices, pseudo
// terminals, TCP ports and standard input and output behind COM1 to COM8.

#pragma once

#include "host/platform/serial/serial_lines.h"
#include "seam/platform.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace orvanel {

/// Makes the wake ready. Before anything else here but the setters; false if the system has no
/// descriptor left.
[[nodiscard]] bool open_serial();

/// Gives it back; link_thread has ended and every line is closed.
void close_serial();

/// Puts what the text names (serial_name.h) behind COM `port` (1..8), where at first nothing
/// stands. A text that is wrong shows when the port is opened. Main thread, while the port is
/// closed.
void set_serial_device(int port, std::string_view text);

/// The folder in which a port that is named `pty` alone gets its link, COM1 to COM8; empty (the
/// start value) for no links. Main thread, while no port is open.
void set_serial_folder(std::string folder);

/// Why the last real_serial_open failed. Main thread.
extern std::string serial_fault;

/// What the peer of an open port has to open: a device, /dev/pts/N, HOST:PORT, or "stdio". Main
/// thread, while its line is not to be closed.
std::string serial_peer_name(int port);

/// The functions of platform.h. Opening one that is still open, since link_thread hasn't closed it
/// yet, gives the same device a further line: it stays open until all of them are closed, and the
/// former lines aren't used any more but for that.
int real_serial_open(int port, std::int32_t baud);
void real_serial_close(int line);
bool real_serial_set_baud(int line, std::int32_t baud);
void real_serial_set_rts(int line, bool on);
int real_serial_cts(int line);
int real_serial_queued_in(int line);
int real_serial_queued_out(int line);
int real_serial_read(int line, std::span<std::uint8_t> into);
int real_serial_write(int line, std::span<const std::uint8_t> data);
void real_wait_for_line(int line, LineEvent event, int ms);
void real_wake_link();

/// These functions as one record.
extern const SerialLines real_lines;

}  // namespace orvanel
