// The serial line of platform.h: the window program always has the real one.

#include "host/platform/serial/serial_line.h"
#include "seam/platform.h"

namespace orvanel {

int serial_open(int port, std::int32_t baud) { return real_serial_open(port, baud); }

void serial_close(int line) { real_serial_close(line); }

bool serial_set_baud(int line, std::int32_t baud) { return real_serial_set_baud(line, baud); }

void serial_set_rts(int line, bool on) { real_serial_set_rts(line, on); }

int serial_cts(int line) { return real_serial_cts(line); }

int serial_queued_in(int line) { return real_serial_queued_in(line); }

int serial_queued_out(int line) { return real_serial_queued_out(line); }

int serial_read(int line, std::span<std::uint8_t> into) { return real_serial_read(line, into); }

int serial_write(int line, std::span<const std::uint8_t> data) {
    return real_serial_write(line, data);
}

void wait_for_line(int line, LineEvent event, int ms) { real_wait_for_line(line, event, ms); }

void wake_link() { real_wake_link(); }

}  // namespace orvanel
