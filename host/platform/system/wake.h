// wake.h: a descriptor that one thread makes readable and another waits for, in poll or in an event
// loop. It crosses threads without a lock, and a signal handler may set it.

#pragma once

namespace orvanel {

/// A new wake, not set; -1 if the system has no descriptor left.
int open_wake();
void close_wake(int fd);

/// Makes `fd` readable. From any thread and from signal handlers; leaves errno alone.
void set_wake(int fd);

/// Makes `fd` unreadable again. Several set_wake before it count as one.
void take_wake(int fd);

/// Waits until `fd` is readable, at most `ms` milliseconds. True if it is.
bool wait_for_wake(int fd, int ms);

/// A wake that SIGINT, SIGTERM and SIGHUP set from now on, in place of ending the program; -1 on
/// failure. One that was open is closed. A SIGHUP that the parent has had ignored stays so. They
/// cut a system call short that waits for a device.
int open_end_signals();

/// Gives these signals their default action again and closes the wake.
void close_end_signals();

/// The same, and if one of them has come meanwhile the process ends by it now.
void obey_end_signals();

}  // namespace orvanel
