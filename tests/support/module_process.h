// module_process.h: the windowless program as a process of its own, in real time with a pseudo
// terminal as its line, for tests and benchmarks that are the peer at its other end.

#pragma once

#include <sys/types.h>

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

struct ModuleProcess {
    pid_t pid;
    int commands;          // where it reads its scenario
    int printed;           // what it prints
    int line;              // the peer's end of its line; reading and writing don't block
    std::string terminal;  // the name of that end
};

/// Starts the program and opens its line. Ends this process if that fails.
ModuleProcess begin_module_process(const std::string& program);

/// Has it run one command that prints a line, and gives that line. Commands before it have run.
std::string ask_module(const ModuleProcess& module, std::string_view command);

/// Has it run a command that prints nothing.
void tell_module(const ModuleProcess& module, std::string_view command);

/// Ends it by SIGTERM. The exit status, below 0 for the signal that it died of.
int end_module_process(ModuleProcess& module);

/// Waits until all is written, until something can be read. Ends this process with a message if
/// that takes more than two minutes: nothing hangs on for ever.
void write_all(int fd, std::span<const std::uint8_t> bytes);
void wait_readable(int fd);

/// As many bytes as there are, at least one and at most `max`.
std::vector<std::uint8_t> read_some(int fd, std::size_t max);

/// Exactly so many.
std::vector<std::uint8_t> read_exactly(int fd, std::size_t count);

}  // namespace orvanel
