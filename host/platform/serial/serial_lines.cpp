#include "host/platform/serial/serial_lines.h"

namespace orvanel {

int serial_open(int port, std::int32_t baud) { return serial_lines->open(port, baud); }

void serial_close(int line) { serial_lines->close(line); }

bool serial_set_baud(int line, std::int32_t baud) { return serial_lines->set_baud(line, baud); }

void serial_set_rts(int line, bool on) { serial_lines->set_rts(line, on); }

int serial_cts(int line) { return serial_lines->cts(line); }

int serial_queued_in(int line) { return serial_lines->queued_in(line); }

int serial_queued_out(int line) { return serial_lines->queued_out(line); }

int serial_read(int line, std::span<std::uint8_t> into) { return serial_lines->read(line, into); }

int serial_write(int line, std::span<const std::uint8_t> data) {
    return serial_lines->write(line, data);
}

void wait_for_line(int line, LineEvent event, int ms) { serial_lines->wait(line, event, ms); }

void wake_link() { serial_lines->wake(); }

}  // namespace orvanel
