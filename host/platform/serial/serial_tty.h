// serial_tty.h: a line behind a serial device of the machine, such as /dev/ttyUSB0. One without
// modem lines counts as CTS on; that is decided when it is opened. A device that vanishes is let go
// and opened again when it is back.

#pragma once

#include "host/platform/serial/serial_name.h"
#include "host/platform/serial/serial_wait.h"
#include "seam/platform.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

struct TtyLine {
    std::string path;
    int fd = -1;  // -1 while the device is away
    std::int32_t baud = 0;
    bool rts = true;           // as it was set last
    bool modem_lines = false;  // the device has RTS, CTS and DTR
    bool counts_errors = false;
    std::uint64_t errors = 0;                          // line errors when they were looked at last
    std::chrono::steady_clock::time_point next_try{};  // of opening it, while it is away
};

/// At the speed that line.baud says.
std::string open_line(TtyLine& line, const SerialName& name);
void close_line(TtyLine& line);
bool set_baud(TtyLine& line, std::int32_t baud);
void set_rts(TtyLine& line, bool on);
int cts(TtyLine& line);
int queued_in(TtyLine& line);
int queued_out(TtyLine& line);
int read(TtyLine& line, std::span<std::uint8_t> into);
int write(TtyLine& line, std::span<const std::uint8_t> data);
SerialWait wait_of(TtyLine& line, LineEvent event);
bool settle(TtyLine& line, LineEvent event, const SerialWait& wait);

}  // namespace orvanel
