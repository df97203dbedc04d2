#include "host/platform/system/wake.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>

namespace orvanel {

namespace {

constinit std::atomic<int> end_fd{-1};     // set by the signal handler
constinit std::atomic<int> end_number{0};  // the signal that came last, 0 for none
static_assert(std::atomic<int>::is_always_lock_free);

}  // namespace

extern "C" {
static void on_end_signal(int number) {
    end_number.store(number);
    set_wake(end_fd.load());
}
}

namespace {

void set_end_action(void (*handler)(int)) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction former {};
        sigaction(number, nullptr, &former);
        // As nohup wants it.
        if (number == SIGHUP && former.sa_handler == SIG_IGN) continue;
        struct sigaction action {};
        action.sa_handler = handler;
        sigaction(number, &action, nullptr);
    }
}

}  // namespace

int open_wake() { return eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC); }

void close_wake(int fd) {
    if (fd >= 0) close(fd);
}

void set_wake(int fd) {
    const int saved_errno = errno;
    const std::uint64_t one = 1;
    // A counter that is full is readable already, so a failing write loses nothing.
    [[maybe_unused]] const ssize_t written = write(fd, &one, sizeof one);
    errno = saved_errno;
}

void take_wake(int fd) {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t got = read(fd, &count, sizeof count);
}

bool wait_for_wake(int fd, int ms) {
    using std::chrono::steady_clock;
    const auto end = steady_clock::now() + std::chrono::milliseconds{ms};
    for (;;) {
        pollfd waiting{fd, POLLIN, 0};
        const int ready = poll(&waiting, 1, ms);
        if (ready > 0) return true;
        if (ready == 0 || errno != EINTR) return false;
        // A signal cut the wait short: wait for what is left of it, rounded up.
        ms = static_cast<int>(
            std::chrono::ceil<std::chrono::milliseconds>(end - steady_clock::now()).count());
        if (ms <= 0) return false;
    }
}

int open_end_signals() {
    const int fd = open_wake();
    if (fd < 0) return fd;
    close_wake(end_fd.exchange(fd));
    set_end_action(on_end_signal);
    return fd;
}

void close_end_signals() {
    set_end_action(SIG_DFL);
    close_wake(end_fd.exchange(-1));
}

void obey_end_signals() {
    close_end_signals();
    if (const int number = end_number.exchange(0); number != 0) std::raise(number);
}

}  // namespace orvanel
