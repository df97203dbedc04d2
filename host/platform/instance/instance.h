// instance.h: the socket on which the program that has a folder (folder_lock.h) takes messages: of
// the companion, and of a second start. docs/reference/formats.md, "Companion". Main thread.

#pragma once

#include <string>

namespace orvanel {

/// Begins to take messages for the folder that was locked; without a lock file it does nothing. A
/// socket that a crash has left is replaced. `has_window`: this program can bring a window to the
/// front. The result is empty on success, else what went wrong, and the program goes on without.
std::string open_instance(bool has_window);

/// Readable whenever serve_instance has something to do, for poll or an event loop; -1 while no
/// messages are taken.
int instance_fd();

/// Serves what has come, without waiting. At most 16 connections are held, further ones are sent
/// away. One that doesn't read its answers isn't listened to, and one that sends more than the
/// module takes waits until there is room.
void serve_instance();

/// Ends all connections and takes the socket away. The folder stays locked.
void close_instance();

}  // namespace orvanel
