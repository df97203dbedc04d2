// real_time.h: the clock side of platform.h for programs that run in real time, with the firmware
// and the line on threads of their own: sleeping, waking, and the life of these threads.

#pragma once

#include <cstdint>

namespace orvanel {

/// Makes the wakes and the serial lines ready and takes the calling thread as the main thread.
/// Before anything else here. False if the system has no descriptor left.
[[nodiscard]] bool open_real_time();

/// Gives the wakes back; stop_module has run.
void close_real_time();

/// Milliseconds on a clock that nobody sets.
std::int64_t real_clock_ms();

/// Sleeps, or returns early once stop_module has begun.
void real_sleep_ms(int ms);

/// How long an idle firmware sleeps at a time. Whatever it has to see wakes it before.
constexpr int max_idle_ms = 1000;

/// As real_sleep_ms, but real_wake_firmware ends it too.
void real_sleep_until_woken(int ms);

/// Ends the running real_sleep_until_woken or the next one. From any thread.
void real_wake_firmware();

/// True on the thread that called open_real_time.
bool real_on_main_thread();

/// Starts firmware_thread and link_thread. A program that shows what it paints has opened its
/// painter (host/requests/painter.h). The platform has to sleep, wake and paint already, and
/// nothing may touch the EEPROM image from here to the end of stop_module.
void start_module();

/// Ends everything in order: shutdown requested, painter sealed, sleepers woken, the threads
/// joined, line and feed closed. Takes microseconds, whatever the threads wait for; but the last
/// bytes of an open line have 200 ms to leave. Main thread.
void stop_module();

}  // namespace orvanel
