#include "host/platform/shared/process.h"

#include <fcntl.h>

#include <csignal>

namespace orvanel {

void prepare_process() {
    constexpr int standard_descriptors = 3;
    // Each open takes the lowest number that is free, which a higher one ends.
    for (int fd = 0; fd >= 0 && fd < standard_descriptors;) {
        if (fcntl(fd, F_GETFD) >= 0)
            ++fd;
        else if (open("/dev/null", O_RDONLY) < 0)
            break;
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace orvanel
