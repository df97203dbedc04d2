// serial_stdio.h: a line behind standard input and output. Where one of them has ended, nothing
// comes any more, or what goes out is lost as on a loose wire.

#pragma once

#include "host/platform/serial/serial_name.h"
#include "host/platform/serial/serial_wait.h"
#include "seam/platform.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orvanel {

struct StdioLine {
    int in = -1, out = -1;            // our own descriptors; -1 once it has ended
    std::vector<std::uint8_t> ahead;  // read from `in` already: its length isn't always known
};

std::string open_line(StdioLine& line, const SerialName& name);
void close_line(StdioLine& line);
int queued_in(StdioLine& line);
int queued_out(StdioLine& line);
int read(StdioLine& line, std::span<std::uint8_t> into);
int write(StdioLine& line, std::span<const std::uint8_t> data);
SerialWait wait_of(StdioLine& line, LineEvent event);
bool settle(StdioLine& line, LineEvent event, const SerialWait& wait);

}  // namespace orvanel
