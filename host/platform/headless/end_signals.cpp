#include "host/platform/headless/end_signals.h"

#include "host/platform/system/wake.h"

#include <poll.h>

namespace orvanel {

namespace {

constinit int end_fd = -1;

}  // namespace

void take_end_signals() {
    if (end_fd >= 0) close_end_signals();
    end_fd = open_end_signals();
}

bool told_to_end() {
    pollfd end{end_fd, POLLIN, 0};
    return poll(&end, 1, 0) > 0;
}

int end_signals_fd() { return end_fd; }

}  // namespace orvanel
