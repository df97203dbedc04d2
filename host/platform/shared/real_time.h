// real_time.h: the clock side of platform.h for programs that run in real time, with the firmware
// on a thread of its own: sleeping, waking, and the life of that thread.

#pragma once

namespace orvanel {

/// Makes the wakes ready and takes the calling thread as the main thread. Before anything else
/// here. False if the system has no descriptor left.
[[nodiscard]] bool open_real_time();

/// Gives the wakes back; firmware_thread has ended.
void close_real_time();

/// Sleeps, or returns early once stop_module has begun.
void real_sleep_ms(int ms);

/// As real_sleep_ms, but real_wake_firmware ends it too.
void real_sleep_until_input(int ms);

/// Ends the running real_sleep_until_input or the next one. From any thread.
void real_wake_firmware();

/// True on the thread that called open_real_time.
bool real_on_main_thread();

/// Opens the painter and starts firmware_thread. The platform has to sleep, wake and paint already,
/// and nothing may touch the EEPROM image from here to the end of stop_module.
void start_module();

/// Ends everything in order: shutdown requested, painter sealed, sleepers woken, firmware_thread
/// joined, feed closed. Takes microseconds, whatever the firmware waits for. Main thread.
void stop_module();

}  // namespace orvanel
