#include "link/roof/link_thread.h"

#include "firmware/core/ground/requests.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"
#include "link/roof/pactlink.h"

namespace orvanel {

namespace {

constexpr int soon_ms = 5;
constexpr int fault_ms = 100;  // a device that is gone doesn't come back at once
constexpr int long_ms = 1000;  // whatever ends such a wait wakes us

constinit int faults = 0;  // in a row

void rest_behind_turn(LinkRest rest) {
    faults = rest == LinkRest::fault ? faults + 1 : 0;
    switch (rest) {
    case LinkRest::none:
        return;
    case LinkRest::pause:
        return com_wait(LineEvent::idle, 1);
    case LinkRest::change:
        return com_wait(LineEvent::input, soon_ms);
    case LinkRest::output:
        return com_wait(LineEvent::output, soon_ms);
    case LinkRest::input:
        return com_wait(LineEvent::input, long_ms);
    case LinkRest::fault:
        // A line error shows once, and bytes may stand behind it.
        return com_wait(LineEvent::idle, faults == 1 ? soon_ms : fault_ms);
    case LinkRest::wake:
        return com_wait(LineEvent::idle, long_ms);
    }
}

}  // namespace

LinkRest link_turn() {
    serve_line_words();
    if (!line_is_open()) return LinkRest::wake;
    const LinkRest rest = protocol_on.load() ? framed_turn() : plain_turn();
    const bool quiet = rest == LinkRest::input || rest == LinkRest::change;
    if (!quiet || !line_is_full()) return rest;
    // With CTS off a device that takes bytes would wake us again and again.
    return line_has_cts() ? LinkRest::output : LinkRest::change;
}

void run_link() {
    line_waits = true;
    // The reset of the start empties the pipes: what a quick peer has sent waits on the line.
    while (!shutdown_requested.load() && !tick_enabled.load()) {
        serve_line_words();
        com_wait(LineEvent::idle, 1);
    }
    while (!shutdown_requested.load()) {
        // A reset empties the pipe without a read; and the firmware may read the last byte before
        // RTS has gone off for it.
        if (!rts_wanted.load() && rx_count() < low_mark) com_rts_on();
        rest_behind_turn(link_turn());
    }
}

}  // namespace orvanel
