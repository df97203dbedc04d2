// link_thread.h: the thread that moves bytes between the serial line and the byte pipes.

#pragma once

#include "link/roof/com_port.h"

namespace orvanel {

/// One turn: takes over what was asked of the line, then moves plain bytes or frames, by
/// protocol_on; without a line nothing. In module time it is the whole of link_thread, each 5 ms.
/// The result says what there is to wait for.
TurnWait link_turn();

/// The thread's body: turn after turn, from the module's first reset until shutdown_requested.
/// Between them it sleeps until there is something to do. Whoever sets shutdown_requested calls
/// wake_link, and close_link after it.
void run_link();

}  // namespace orvanel
