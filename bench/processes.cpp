#include "bench/processes.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <signal.h>
#include <thread>

namespace orvanel {

namespace {

double seconds_of(clockid_t clock) {
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

}  // namespace

double seconds_since(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

double cpu_seconds_of_thread() { return seconds_of(CLOCK_THREAD_CPUTIME_ID); }

double cpu_seconds_of(pid_t pid) {
    clockid_t clock{};
    return clock_getcpuclockid(pid, &clock) == 0 ? seconds_of(clock) : 0;
}

pid_t begin_process(const std::vector<std::string>& command, int out) {
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    const pid_t pid = fork();
    if (pid < 0) {
        std::fputs("no process left\n", stderr);
        std::exit(EXIT_FAILURE);
    }
    if (pid > 0) return pid;
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nowhere, STDIN_FILENO);
    dup2(out < 0 ? nowhere : out, STDOUT_FILENO);
    execvp(arguments[0], arguments.data());
    std::perror(arguments[0]);
    _exit(127);
}

void end_process(pid_t pid, int signal) {
    if (signal != 0) kill(pid, signal);
    waitpid(pid, nullptr, 0);
}

long kib_of(pid_t pid, const std::string& file, const std::string& field) {
    std::ifstream entry("/proc/" + std::to_string(pid) + "/" + file);
    for (std::string word; entry >> word;) {
        long kib = 0;
        if (word == field && entry >> kib) return kib;
    }
    return 0;
}

void print_result(const std::string& what, double number, const char* unit) {
    std::printf("%-58s %10.2f %s\n", what.c_str(), number, unit);
}

void send_at_line_speed(int line, std::string_view commands, std::chrono::seconds time) {
    constexpr int bytes_a_second = 11'520;
    constexpr std::chrono::milliseconds beat{10};
    std::size_t sent = 0;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 1; std::chrono::steady_clock::now() - begin < time; ++i) {
        const auto due = static_cast<std::size_t>(seconds_since(begin) * bytes_a_second);
        while (sent < due) {
            const std::size_t at = sent % commands.size();
            const ssize_t n =
                write(line, commands.data() + at, std::min(due - sent, commands.size() - at));
            if (n <= 0) break;
            sent += static_cast<std::size_t>(n);
        }
        std::this_thread::sleep_until(begin + i * beat);
    }
}

void measure_sleeper(std::chrono::seconds time) {
    const double before = cpu_seconds_of_thread();
    const auto begin = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - begin < time)
        std::this_thread::sleep_for(std::chrono::milliseconds{5});
    print_result("a thread that sleeps 5 ms at a time",
                 100 * (cpu_seconds_of_thread() - before) / seconds_since(begin), "% of a core");
}

}  // namespace orvanel
