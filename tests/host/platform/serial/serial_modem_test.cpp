// The modem lines of a serial device, which a pseudo terminal doesn't have: the calls to the system
// that ask for them are answered here. The program is linked so that ioctl comes by.

#include "tests/host/platform/serial/serial_support.h"

#include <linux/serial.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <memory>
#include <thread>

namespace {

struct Modem {
    std::atomic<int> lines;  // TIOCM_CTS is the peer's, RTS and DTR are ours
    std::atomic<int> overruns;
};
constinit Modem modem{};

}  // namespace

extern "C" {
// The linker's --wrap gives these names.
// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming)
int __real_ioctl(int fd, unsigned long request, ...);
int __wrap_ioctl(int fd, unsigned long request, ...);
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)

int __wrap_ioctl(int fd, unsigned long request, ...) {
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    switch (request) {
    case TIOCMGET:
        *static_cast<int*>(argument) = modem.lines.load();
        return 0;
    case TIOCMBIS:
        modem.lines |= *static_cast<int*>(argument);
        return 0;
    case TIOCMBIC:
        modem.lines &= ~*static_cast<int*>(argument);
        return 0;
    case TIOCGICOUNT:
        static_cast<serial_icounter_struct*>(argument)->overrun = modem.overruns.load();
        return 0;
    default:
        return __real_ioctl(fd, request, argument);
    }
}
}

namespace orvanel {

namespace {

class SerialModem : public SerialTest {
  protected:
    SerialModem() {
        modem.lines = 0;
        modem.overruns = 7;
    }
    static bool shows(int lines) { return (modem.lines & (TIOCM_RTS | TIOCM_DTR)) == lines; }

    const StandIn device;
};

}  // namespace

TEST_F(SerialModem, shows_dtr_and_rts_and_sees_cts) {
    const int line = open_port(1, device.name);
    ASSERT_GT(line, 0) << serial_fault;
    EXPECT_TRUE(shows(TIOCM_DTR | TIOCM_RTS));
    real_serial_set_rts(line, false);
    EXPECT_TRUE(shows(TIOCM_DTR));
    peer_sends(device.master, "x");
    EXPECT_EQ(taken(line, 1), "x") << "what has come is read in spite of RTS";
    EXPECT_EQ(real_serial_cts(line), 1);
    std::thread peer([] { modem.lines |= TIOCM_CTS; });
    const auto begin = std::chrono::steady_clock::now();
    real_wait_for_line(line, LineEvent::cts, 60'000);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, long_limit);
    EXPECT_EQ(real_serial_cts(line), 0);
    peer.join();
    real_serial_close(line);
}

TEST_F(SerialModem, a_device_that_comes_back_has_the_rts_that_the_line_has) {
    const std::string path = folder / "tty";
    auto first = std::make_unique<StandIn>();
    std::filesystem::create_symlink(first->name, path);
    const int line = open_port(1, path);
    ASSERT_GT(line, 0) << serial_fault;
    real_serial_set_rts(line, false);
    std::filesystem::remove(path);
    first.reset();
    EXPECT_TRUE(eventually([&] { return real_serial_queued_in(line) < 0; }));
    modem.lines = 0;
    std::filesystem::create_symlink(device.name, path);
    EXPECT_TRUE(eventually([&] { return real_serial_queued_in(line) == 0; }));
    EXPECT_TRUE(shows(TIOCM_DTR));
    real_serial_close(line);
}

TEST_F(SerialModem, a_line_error_is_told_once) {
    const int line = open_port(1, device.name);
    EXPECT_EQ(real_serial_queued_in(line), 0) << "what was counted before us isn't ours";
    ++modem.overruns;
    EXPECT_LT(real_serial_queued_in(line), 0);
    EXPECT_EQ(real_serial_queued_in(line), 0);
    real_serial_close(line);
}

TEST_F(SerialModem, opened_anew_while_it_is_open_has_rts_on) {
    const int line = open_port(1, device.name);
    real_serial_set_rts(line, false);
    const int again = real_serial_open(1, 9600);
    EXPECT_GT(again, 0) << serial_fault;
    EXPECT_NE(again, line);
    real_serial_set_rts(line, false);
    real_serial_close(line);
    EXPECT_EQ(real_serial_queued_in(again), 0);
    EXPECT_TRUE(shows(TIOCM_DTR | TIOCM_RTS));
    real_serial_close(again);
}

}  // namespace orvanel
