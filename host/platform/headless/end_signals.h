// end_signals.h: SIGINT and SIGTERM, which end a run in order.

#pragma once

namespace orvanel {

/// Takes SIGINT and SIGTERM from now on; told_to_end says whether one has come, end_signals_fd is
/// readable from then on. Again after a fork, so that parent and child have each their own.
void take_end_signals();
bool told_to_end();
int end_signals_fd();

/// Waits until there is something to read on `fd`. False if one of the signals came first.
bool wait_for_input(int fd);

/// Whether reading `fd` gives something at once.
bool input_is_there(int fd);

}  // namespace orvanel
