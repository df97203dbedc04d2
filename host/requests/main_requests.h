// main_requests.h: what the firmware asks of the main thread: paints (painter.h), a message box, a
// beep, the panel of the ports. The main thread never waits for the firmware.

#pragma once

namespace orvanel {

/// Serves what firmware_thread has asked for. Called by the platform on the main thread after each
/// wake_main.
void serve_main_requests();

/// The user has closed the box of the module's message; the firmware goes on. Main thread.
void message_closed();

/// The panel of the output ports is to show ports_shown again. From any thread.
void request_ports();

/// Lets messages be asked for, as at the start of the firmware. Until then they count as sealed.
void open_messages();

/// Says, once, that no message will be shown any more: whoever waits for its closing goes on, and
/// nobody waits ever after. Main thread.
void seal_messages();

}  // namespace orvanel
