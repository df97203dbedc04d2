// serial_pty.h: a line behind a pseudo terminal, for programs on the same machine. Its peer is
// whoever has the terminal open; while there is none, what goes out is lost as on a loose wire. A
// peer finds it raw and empty.

#pragma once

#include "host/platform/serial/serial_name.h"
#include "host/platform/serial/serial_wait.h"
#include "seam/platform.h"

#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

struct PtyLine {
    int master = -1;
    std::string terminal;  // what the peer opens: /dev/pts/N
    std::string link;      // the symbolic link to it, empty for none
    bool peer = false;     // somebody had it open when we looked last
};

/// As the others, with the link that name.path says. A link of that name which leads to a pseudo
/// terminal that is no more is replaced, anything else by that name is a fault.
std::string open_line(PtyLine& line, const SerialName& name);
void close_line(PtyLine& line);
int queued_in(PtyLine& line);
int queued_out(PtyLine& line);
int read(PtyLine& line, std::span<std::uint8_t> into);
int write(PtyLine& line, std::span<const std::uint8_t> data);
SerialWait wait_of(PtyLine& line, LineEvent event);
bool settle(PtyLine& line, LineEvent event, const SerialWait& wait);

}  // namespace orvanel
