#include "tests/support/module_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <signal.h>

namespace orvanel {

namespace {

constexpr int long_ms = 120'000;

[[noreturn]] void give_up(const char* what) {
    std::fprintf(stderr, "the module's process: %s\n", what);
    std::_Exit(EXIT_FAILURE);
}

void wait_for(int fd, short events, const char* what) {
    pollfd one{fd, events, 0};
    if (poll(&one, 1, long_ms) <= 0) give_up(what);
}

/// One line of what it prints, without its end.
std::string printed_line(int fd) {
    std::string line;
    for (;;) {
        wait_readable(fd);
        char c = 0;
        if (read(fd, &c, 1) != 1) give_up("it has ended");
        if (c == '\n') return line;
        line += c;
    }
}

}  // namespace

ModuleProcess begin_module_process(const std::string& program) {
    std::array<int, 2> in{}, out{};
    if (pipe2(in.data(), O_CLOEXEC) != 0 || pipe2(out.data(), O_CLOEXEC) != 0) give_up("no pipe");
    const pid_t pid = fork();
    if (pid < 0) give_up("no process");
    if (pid == 0) {
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        execl(program.c_str(), program.c_str(), "--realtime", "--serial", "pty", "-", nullptr);
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    ModuleProcess module{pid, in[1], out[0], -1, {}};
    constexpr std::string_view serial = "serial ";
    const std::string first = printed_line(module.printed);
    if (!first.starts_with(serial)) give_up("it names no terminal");
    module.terminal = first.substr(serial.size());
    module.line = open(module.terminal.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (module.line < 0) give_up("its terminal can't be opened");
    return module;
}

void tell_module(const ModuleProcess& module, std::string_view command) {
    const std::string line = std::string{command} + "\n";
    if (write(module.commands, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        give_up("it takes no command");
}

std::string ask_module(const ModuleProcess& module, std::string_view command) {
    tell_module(module, command);
    return printed_line(module.printed);
}

int end_module_process(ModuleProcess& module) {
    kill(module.pid, SIGTERM);
    int ending = 0;
    while (waitpid(module.pid, &ending, 0) < 0 && errno == EINTR) {
    }
    for (const int fd : {module.commands, module.printed, module.line})
        close(fd);
    return WIFEXITED(ending) ? WEXITSTATUS(ending) : -WTERMSIG(ending);
}

void wait_readable(int fd) { wait_for(fd, POLLIN, "nothing comes any more"); }

void write_all(int fd, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        wait_for(fd, POLLOUT, "it takes nothing any more");
        const ssize_t n = write(fd, bytes.data(), bytes.size());
        if (n > 0) bytes = bytes.subspan(static_cast<std::size_t>(n));
        if (n < 0 && errno != EAGAIN && errno != EINTR) give_up("its line is gone");
    }
}

std::vector<std::uint8_t> read_some(int fd, std::size_t max) {
    std::vector<std::uint8_t> bytes(max);
    for (;;) {
        wait_readable(fd);
        const ssize_t n = read(fd, bytes.data(), bytes.size());
        if (n > 0) {
            bytes.resize(static_cast<std::size_t>(n));
            return bytes;
        }
        if (n == 0 || (errno != EAGAIN && errno != EINTR)) give_up("its line is gone");
    }
}

std::vector<std::uint8_t> read_exactly(int fd, std::size_t count) {
    std::vector<std::uint8_t> all;
    while (all.size() < count) {
        const std::vector<std::uint8_t> part = read_some(fd, count - all.size());
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

}  // namespace orvanel
