// processes.h: programs as processes of their own, seen from outside: their time and memory.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

double seconds_since(std::chrono::steady_clock::time_point begin);

/// Processor time of this thread, and of another process.
double cpu_seconds_of_thread();
double cpu_seconds_of(pid_t pid);

/// Starts a program whose output goes to `out`, or nowhere if that is below 0. Ends this process if
/// it can't be had.
pid_t begin_process(const std::vector<std::string>& command, int out = -1);

/// Waits for its end; if `signal` isn't 0, tells it to end before.
void end_process(pid_t pid, int signal = 0);

/// A field of the process's entry below /proc in KiB, such as `VmRSS:` of status.
long kib_of(pid_t pid, const std::string& file, const std::string& field);

/// The line `WHAT   NUMBER UNIT` of a result.
void print_result(const std::string& what, double number, const char* unit);

/// Sends the commands over and over at 115200 baud. Where the line takes no more they wait.
void send_at_line_speed(int line, std::string_view commands, std::chrono::seconds time);

/// The share of a core that a thread takes which sleeps 5 ms at a time.
void measure_sleeper(std::chrono::seconds time);

/// Processor time of the processes in percent of a core, while `meanwhile` runs.
template <typename Work>
void measure_share(const std::string& what, const std::vector<pid_t>& processes, Work meanwhile) {
    const auto used = [&] {
        double sum = 0;
        for (const pid_t pid : processes)
            sum += cpu_seconds_of(pid);
        return sum;
    };
    const double before = used();
    const auto begin = std::chrono::steady_clock::now();
    meanwhile();
    print_result(what, 100 * (used() - before) / seconds_since(begin), "% of a core");
}

}  // namespace orvanel
