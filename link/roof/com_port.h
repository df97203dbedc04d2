// com_port.h: the serial port: choosing it on the main thread, and on link_thread what goes in and
// out of it, above the seam of seam/platform.h.
//
// An open port is a number, a line. The main thread opens it and hands it over in one word;
// link_thread takes it at its next turn, lets the last bytes of the line before it out and closes
// that one. The main thread waits for this only where a device has to be given back before it can
// be opened again.

#pragma once

#include "seam/platform.h"

#include <cstdint>
#include <span>

namespace orvanel {

constexpr int line_block = 4000;     // bytes that a turn of plain bytes moves at most, each way
constexpr int cts_wait_limit = 300;  // changes of time_10ms that a write waits for CTS
constexpr int com_write_chunk = 8;   // bytes of one write; CTS is looked at before each

/// The time base of the limits here: the platform's clock in whole units of 10 ms.
std::int64_t time_10ms();

// The main thread.

/// Chooses a port, 0..8, or another speed for the chosen one. A new port is opened at the stored
/// com_baud, and `baud` is not looked at; one that can't be opened is reported in a message, and
/// the choice is then 0. com_port says what came of it; the caller shows it in title and menu.
void com_select(int port, std::int32_t baud);

/// Pactlink or plain bytes from the next turn on. What is under way stays as it is.
void choose_protocol(bool framed);

/// Lets the last bytes out and closes what is open or handed over. For the end, when link_thread
/// doesn't run any more.
void close_link();

// link_thread, or the one thread of module time.

/// Waits for the line take time. In module time they don't: what isn't ready fails at once, as if
/// its limit had passed. Set before the first turn.
extern bool line_waits;

/// Takes a line that was handed over, sets speed and RTS as they are wanted, and gives the device
/// what it had no room for before.
void serve_line_words();

/// True while a line is open here, and while the device had no room for all that it was given.
bool line_is_open();
bool line_is_full();

/// CTS is on. A fault counts as off.
bool line_has_cts();

/// Bytes that wait to be read; below 0 on a fault, and once after a line error.
int com_queued_in();

/// Reads what has arrived, without waiting. Bytes read, below 0 on a fault.
int com_read(std::span<std::uint8_t> into);

/// Writes all of it. False at the first failure: CTS stayed off for the whole wait, the device has
/// a fault or took nothing for as long, another line was handed over, or the program ends.
bool com_write(std::span<const std::uint8_t> data);

/// What link_thread waits for after a turn.
enum class TurnWait : std::uint8_t {
    none,    // nothing: there is more to do
    pause,   // a millisecond, so that bytes that come in one by one gather
    change,  // CTS, RTS or a full queue; nobody tells of these, so it looks again soon
    output,  // the device takes bytes again
    input,   // bytes
    fault,   // the end of a fault
    wake,    // a line
};

/// One turn of plain bytes: answers go out while CTS is on, then what has arrived goes into
/// rx_pipe. Above the high mark RTS goes off.
TurnWait plain_turn();

/// Waits for this on the open line, `ms` at most.
void com_wait(LineEvent event, int ms);

}  // namespace orvanel
