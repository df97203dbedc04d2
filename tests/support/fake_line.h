// fake_line.h: the serial line as the tests see it: what arrives and leaves stands in memory, the
// modem lines are switched by hand, and waiting moves a clock that costs no time.

#pragma once

#include "seam/platform.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string_view>
#include <vector>

namespace orvanel {

struct FakeLine {
    std::vector<std::uint8_t> in;   // waits to be read
    std::vector<std::uint8_t> out;  // has left
    std::int32_t baud;
    bool rts;
    int cts;           // what serial_cts gives
    bool faulty;       // every operation on it has a fault
    bool line_error;   // the next serial_queued_in has one
    bool absent;       // can't be opened
    bool one_device;   // all ports stand for one device, which opens once only
    std::size_t room;  // bytes that the device takes before it is full
    int queued_out;    // what serial_queued_out gives
    int held_port;     // the port that was opened last, 0 if that is closed
    int line;          // its number, counted up by each opening
    int openings, closings;
    int waits;                       // calls of wait_for_line
    LineEvent waited_for;            // the last of them
    std::int64_t now_ms;             // the clock; a wait moves it to its end
    std::function<void()> on_write;  // runs after each write
    std::function<void()> on_wait;   // runs in each wait: where a test lets the world move
    std::function<void()> on_wake;   // runs in each wake_link
};

extern FakeLine fake_line;

/// A device that takes everything, with CTS on, and nothing open.
void fresh_line();

}  // namespace orvanel
