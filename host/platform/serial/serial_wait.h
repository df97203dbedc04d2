// serial_wait.h: what the kinds of a serial line have in common: how they fail, and how they tell
// what wait_for_line has to watch.
//
// Each kind is a record and one set of functions on it, named alike:
//     open_line   opens what the name says; the result is empty on success, else the reason and
//                 nothing is open
//     close_line  gives everything back
//     wait_of     what to watch for an event, input, output or idle
//     settle      what that brought: true if the event has come
// and queued_in, queued_out, read, write as platform.h has them. The lines and the speed are a
// matter of serial devices alone.

#pragma once

#include <poll.h>

#include <string>

namespace orvanel {

struct SerialWait {
    bool ready;             // the event has come already; the rest says nothing
    int look_ms;            // ask again after this time, whatever comes
    pollfd peer, listener;  // fd -1: not watched
};

constexpr int no_look = 60'000;  // nothing but descriptors tells; any time will do

constexpr SerialWait watch_nothing{false, no_look, {-1, 0, 0}, {-1, 0, 0}};

/// What poll says of `fd` at once, for `events`.
short poll_now(int fd, short events);

}  // namespace orvanel
