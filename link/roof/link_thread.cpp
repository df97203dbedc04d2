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

void wait_after_turn(TurnWait rest) {
    faults = rest == TurnWait::fault ? faults + 1 : 0;
    switch (rest) {
    case TurnWait::none:
        return;
    case TurnWait::pause:
        return com_wait(LineEvent::idle, 1);
    case TurnWait::change:
        return com_wait(LineEvent::input, soon_ms);
    case TurnWait::output:
        return com_wait(LineEvent::output, soon_ms);
    case TurnWait::input:
        return com_wait(LineEvent::input, long_ms);
    case TurnWait::fault:
        // A line error shows once, and bytes may stand after it.
        return com_wait(LineEvent::idle, faults == 1 ? soon_ms : fault_ms);
    case TurnWait::wake:
        return com_wait(LineEvent::idle, long_ms);
    }
}

}  // namespace

TurnWait link_turn() {
    serve_line_words();
    if (!line_is_open()) return TurnWait::wake;
    const TurnWait rest = protocol_on.load() ? framed_turn() : plain_turn();
    const bool quiet = rest == TurnWait::input || rest == TurnWait::change;
    if (!quiet || !line_is_full()) return rest;
    // With CTS off a device that takes bytes would wake us again and again.
    return line_has_cts() ? TurnWait::output : TurnWait::change;
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
        wait_after_turn(link_turn());
    }
}

}  // namespace orvanel
