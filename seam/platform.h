// platform.h: the seam below which the systems differ: clock, sleeping, waking, painting. Free
// functions in our words; each program links exactly one implementation (desktop/, headless/, or
// the fake of the tests).

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace orvanel {

/// A rectangle of window pixels; right and bottom are exclusive.
struct PixelRect {
    int left, top, right, bottom;
};

/// Sleeps on the clock of this platform. Module time moves by `ms` and serves what falls due;
/// real time may return early once shutdown_requested is set.
void sleep_ms(int ms);

/// The firmware has nothing to do until it is woken; what it has left for itself it sleeps for by
/// sleep_ms. Module time moves by `ms` and serves what falls due, whether it wakes the firmware or
/// not; real time goes by until wake_firmware.
void sleep_until_woken(int ms);

/// Ends a sleep_until_woken that is running, or the next one. Called from any thread after
/// whatever another thread leaves for an idle firmware: a byte in rx_pipe, the finger, a tick, a
/// restart.
void wake_firmware();

/// What one byte costs that the read layer takes from a macro or from rx_pipe: 10 us of module
/// time, nothing in real time.
void spend_byte_time();

/// True on the host's main thread, where painting happens; always true in module time.
bool on_main_thread();

/// Milliseconds on the clock of this platform, from any start.
std::int64_t clock_ms();

// The serial line. A line is the number of an open device, above 0; 0 is none. A line is opened by
// the main thread and from then on used by link_thread alone, which closes it. Nothing here waits,
// but for wait_for_line. A device without modem lines counts as CTS on; one that has vanished gives
// a fault on each operation until it is back, and then goes on by itself, with the speed and the
// RTS set last. What stands for a wire without being one, such as a pseudo terminal, has no faults:
// while nobody is at its other end nothing comes and what goes out is lost.

constexpr int max_com_ports = 8;  // COM1 to COM8

/// Opens what COM `port` (1..8) stands for, for this program alone: 8 data bits, no parity, 1
/// stop bit, RTS/CTS handshake, queues of 16384 bytes in and 8192 out, DTR on, then RTS on. 0 on
/// failure. A port that was given up may be opened again before link_thread has closed its line;
/// the new line then is another one, and the former is only to be closed.
int serial_open(int port, std::int32_t baud);

/// Gives the device back at once; what it still holds is lost.
void serial_close(int line);

/// False on a fault.
bool serial_set_baud(int line, std::int32_t baud);

/// RTS by hand. Without modem lines nothing is taken from the device while it is off, and the
/// queue in counts as empty, so that the peer has to wait once the device is full.
void serial_set_rts(int line, bool on);

/// 0 CTS is on, 1 it is off, below 0 on a fault.
int serial_cts(int line);

/// Bytes that wait to be read and to leave; below 0 on a fault or after a line error, which this
/// call clears. More may wait than the device tells of at once.
int serial_queued_in(int line);
int serial_queued_out(int line);

/// Reads what has arrived, without waiting. Bytes read, below 0 on a fault.
int serial_read(int line, std::span<std::uint8_t> into);

/// Hands bytes to the device, without waiting. Bytes that it took, which may be fewer; below 0 on
/// a fault.
int serial_write(int line, std::span<const std::uint8_t> data);

/// What wait_for_line waits for.
enum class LineEvent : std::uint8_t {
    input,   // bytes have arrived
    output,  // the device takes bytes again
    cts,     // CTS may have changed
    idle,    // nothing but wake_link
};

/// Lets link_thread sleep until the event, a wake_link or the end of `ms` milliseconds, whichever
/// comes first; `line` may be 0. Real time only: in module time nothing waits for the line.
void wait_for_line(int line, LineEvent event, int ms);

/// Ends a wait_for_line that is running, or the next one. From any thread.
void wake_link();

/// Has the main thread call serve_main_requests (host/requests/main_requests.h) soon. Called from
/// any thread.
void wake_main();

/// Paints this part of the window before it returns. Main thread only.
void paint_window(PixelRect rect);

/// From now on the main thread runs backlight_fade_step (firmware/core/ground/backlight.h) every 20
/// ms, for the first time in 20 ms; or no more. Main thread only.
void set_fade_timer(bool runs);

/// Whose message it is. The module's belongs to the window, which takes no input while it is open,
/// and message_closed (host/requests/main_requests.h) is called when the user has closed it, which
/// may be before open_message_box returns. The host's stands for itself: the glass can still be
/// touched.
enum class MessageOf : std::uint8_t { host, module };

/// Opens a message box and returns at once. Main thread only.
void open_message_box(MessageOf whose, std::string_view caption, std::string_view text);

/// The system's simple beep. Main thread only.
void sound_beep();

}  // namespace orvanel
