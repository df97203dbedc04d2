// serial_lines.h: what stands behind the serial line of platform.h: lines of the system, or those
// that a program makes up.

#pragma once

#include "seam/platform.h"

#include <cstdint>
#include <span>

namespace orvanel {

/// One operation for each of platform.h's on a line, with the same meaning.
struct SerialLines {
    int (*open)(int port, std::int32_t baud);
    void (*close)(int line);
    bool (*set_baud)(int line, std::int32_t baud);
    void (*set_rts)(int line, bool on);
    int (*cts)(int line);
    int (*queued_in)(int line);
    int (*queued_out)(int line);
    int (*read)(int line, std::span<std::uint8_t> into);
    int (*write)(int line, std::span<const std::uint8_t> data);
    void (*wait)(int line, LineEvent event, int ms);
    void (*wake)();
};

/// The lines of the program. Each defines this word with those that it begins with; chosen before
/// a port is opened.
extern const SerialLines* serial_lines;

}  // namespace orvanel
