#include "host/platform/headless/end_signals.h"

#include "host/platform/system/wake.h"

#include <poll.h>

#include <array>

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

bool wait_for_input(int fd) {
    std::array<pollfd, 2> fds{pollfd{fd, POLLIN, 0}, pollfd{end_fd, POLLIN, 0}};
    while (poll(fds.data(), fds.size(), -1) < 0) {
    }
    return fds[1].revents == 0;
}

bool input_is_there(int fd) {
    pollfd input{fd, POLLIN, 0};
    return poll(&input, 1, 0) > 0;
}

}  // namespace orvanel
