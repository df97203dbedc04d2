// The line of the windowless program, a process of its own, measured by a peer at the other end of
// its pseudo terminal: link_bench PROGRAM
// Beside it stands `cat` in the module's place, and a thread that sleeps 5 ms at a time.

#include "bench/processes.h"
#include "tests/support/module_process.h"
#include "tests/support/pactlink_peer.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <signal.h>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace orvanel;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::size_t window = 40'000;  // bytes on their way there and back
constexpr int latency_samples = 2000;
constexpr std::chrono::seconds share_time{10};

/// `cat` where the module would be.
struct Cat {
    pid_t pid;
    int line;  // the peer's end
};

Cat begin_cat() {
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    std::array<char, 64> name{};
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0 ||
        ptsname_r(master, name.data(), name.size()) != 0)
        std::exit(EXIT_FAILURE);
    const int line = open(name.data(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    termios mode{};
    tcgetattr(line, &mode);
    cfmakeraw(&mode);
    tcsetattr(line, TCSANOW, &mode);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(master, STDIN_FILENO);
        dup2(master, STDOUT_FILENO);
        execlp("cat", "cat", nullptr);
        _exit(127);
    }
    close(master);
    return {pid, line};
}

void end_cat(const Cat& cat) {
    kill(cat.pid, SIGTERM);
    waitpid(cat.pid, nullptr, 0);
    close(cat.line);
}

/// Whether more may go out: of what has come back, its share of `bytes` is behind us.
bool may_send(const Bytes& bytes, std::size_t sent, std::size_t back, std::size_t got) {
    return sent < bytes.size() && sent < got * bytes.size() / back + window;
}

/// Sends the bytes and reads `back` bytes; megabytes a second of them.
double stream(int line, const Bytes& bytes, std::size_t back) {
    const auto begin = steady_clock::now();
    std::size_t sent = 0, got = 0;
    while (got < back) {
        const bool room = may_send(bytes, sent, back, got);
        if (room) {
            pollfd both{line, POLLIN | POLLOUT, 0};
            poll(&both, 1, -1);
            if ((both.revents & POLLOUT) != 0) {
                const ssize_t n = write(line, bytes.data() + sent,
                                        std::min<std::size_t>(bytes.size() - sent, 4000));
                if (n > 0) sent += static_cast<std::size_t>(n);
            }
            if ((both.revents & POLLIN) == 0) continue;
        }
        got += read_some(line, 65536).size();
    }
    return static_cast<double>(back) / 1e6 / seconds_since(begin);
}

/// Commands that have the module send `bytes` bytes, 255 at a time, and their payload beside them.
Bytes send_back(std::size_t bytes) {
    Bytes commands;
    for (std::size_t i = 0; i < bytes; i += 255) {
        for (const int byte : {0x1B, int{'S'}, int{'B'}, 255})
            commands.push_back(static_cast<std::uint8_t>(byte));
        commands.insert(commands.end(), 255, 'x');
    }
    return commands;
}

/// The same in frames: data in as large ones as there are, answers fetched 64 bytes at a time.
double stream_frames(PactlinkPeer& peer, const Bytes& bytes, std::size_t back) {
    const Bytes fetch{'S'};
    const auto begin = steady_clock::now();
    std::size_t sent = 0, got = 0;
    while (got < back) {
        if (may_send(bytes, sent, back, got)) {
            const std::size_t piece = std::min<std::size_t>(255, bytes.size() - sent);
            send_frame(peer, frame_of(0x11, std::span(bytes).subspan(sent, piece)));
            sent += piece;
        }
        for (int i = 0; i < 4; ++i)
            got += ask(peer, fetch).size();
    }
    return static_cast<double>(back) / 1e6 / seconds_since(begin);
}

/// From the last byte of a question to the last one of its answer.
void latency(const char* what, int line, const Bytes& question, std::size_t answer) {
    std::vector<double> times;
    for (int i = 0; i < latency_samples; ++i) {
        std::this_thread::sleep_for(milliseconds{1});
        const auto begin = steady_clock::now();
        write_all(line, question);
        read_exactly(line, answer);
        times.push_back(seconds_since(begin) * 1e6);
    }
    std::sort(times.begin(), times.end());
    std::printf("%-58s median %5.0f us, p99 %5.0f us\n", what, times[times.size() / 2],
                times[times.size() * 99 / 100]);
}

std::string lines_and_text() {
    std::string commands;
    for (int i = 0; i < 400; ++i) {
        const std::string x = std::to_string(commands.size() % 240);
        commands.append("#GD").append(x).append(",0,239,100;#RI").append(x).append(",5,60,90;text");
    }
    return commands;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: link_bench PROGRAM\n", stderr);
        return 2;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    constexpr std::size_t much = 255 * 16'000;
    const Cat cat = begin_cat();
    print_result("there and back, cat", stream(cat.line, Bytes(much, 'x'), much), "MB/s");
    latency("a byte there and back, cat", cat.line, {'x'}, 1);
    end_cat(cat);

    ModuleProcess module = begin_module_process(argv[1]);
    tell_module(module, "protocol 0");
    ask_module(module, "time");
    print_result("there and back, plain", stream(module.line, send_back(much), much), "MB/s");
    latency("ESC ? and its answer of 9 bytes, plain", module.line, {0x1B, '?'}, 9);
    tell_module(module, "protocol 1");
    ask_module(module, "time");
    PactlinkPeer peer{module.line, 0, std::mt19937(1), 0, 0, 0, 0, 0, 0};
    print_result("there and back, Pactlink", stream_frames(peer, send_back(much), much), "MB/s");
    latency("an empty data frame and its ACK", module.line, frame_of(0x11, {}), 1);

    const auto rest = [] { std::this_thread::sleep_for(share_time); };
    measure_share("idle, Pactlink", {module.pid}, rest);
    tell_module(module, "protocol 0");
    ask_module(module, "time");
    measure_share("idle, plain", {module.pid}, rest);
    measure_share("lines and text at 115200 baud, plain", {module.pid},
                  [&] { send_at_line_speed(module.line, lines_and_text(), share_time); });
    measure_sleeper(share_time);
    return end_module_process(module);
}
