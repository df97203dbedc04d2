#include "host/platform/headless/jobs.h"

#include "base/files.h"
#include "base/safe_file.h"
#include "base/standard_output.h"
#include "base/visible.h"
#include "host/platform/headless/end_signals.h"
#include "host/platform/headless/session.h"
#include "host/scenario/junit.h"
#include "host/scenario/report.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

namespace orvanel {

namespace {

using std::chrono::steady_clock;

enum Stream : std::size_t { output, errors, records, stream_count };

struct Job {
    std::string name;
    pid_t pid;                          // 0 before the start
    std::array<int, stream_count> fds;  // where its streams are read, -1 for none
    std::array<std::string, stream_count> texts;
    std::chrono::steady_clock::time_point start;
    double seconds;
    std::vector<Fault> faults;
    bool results_withheld;  // by the scenario, which reads their file
    bool done;
};

bool is_running(const Job& job) { return job.pid != 0 && !job.done; }

void close_end(int& fd) {
    if (fd >= 0) close(fd);
    fd = -1;
}

/// A fault that the process can't tell itself.
void add_fault(Job& job, int status, const std::string& text) {
    job.faults.push_back({status, 0, text});
    job.texts[errors] += fault_message(job.name, job.faults.back()) + "\n";
}

/// In the child: its streams go to the pipes, those of the others are none of its business.
[[noreturn]] void be_child(std::span<Job> jobs, const Job& job,
                           const std::array<int, stream_count>& ends, const sigset_t& former) {
    for (Job& other : jobs)
        for (int& fd : other.fds)
            close_end(fd);
    if (ends[output] >= 0) dup2(ends[output], STDOUT_FILENO);
    if (ends[errors] >= 0) dup2(ends[errors], STDERR_FILENO);
    fault_record_fd = ends[records];
    take_end_signals();
    prctl(PR_SET_PDEATHSIG, SIGTERM);  // nobody is left to hear of it
    sigprocmask(SIG_SETMASK, &former, nullptr);
    std::exit(run_session(job.name));
}

/// Opens the pipes of a job: reading ends into the job, writing ends into `ends`.
bool open_pipes(Job& job, bool keep_output, std::array<int, stream_count>& ends) {
    job.fds.fill(-1);
    ends.fill(-1);
    for (std::size_t i = keep_output ? output : records; i < stream_count; ++i) {
        std::array<int, 2> pair{};
        if (pipe2(pair.data(), O_CLOEXEC) != 0) return false;
        job.fds[i] = pair[0];
        ends[i] = pair[1];
    }
    return true;
}

void start(std::span<Job> jobs, Job& job, bool keep_output) {
    std::array<int, stream_count> ends{};
    job.start = steady_clock::now();
    const bool opened = open_pipes(job, keep_output, ends);
    // A signal between the fork and the child's own wake would be lost in the parent's.
    sigset_t all, former;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, &former);
    job.pid = opened ? fork() : -1;
    if (job.pid == 0) be_child(jobs, job, ends, former);
    sigprocmask(SIG_SETMASK, &former, nullptr);
    if (job.pid < 0) {
        add_fault(job, wrong_line, "can't start a process: " + errno_text());
        for (int& fd : job.fds)
            close_end(fd);
        job.done = true;
    }
    for (int& fd : ends)
        close_end(fd);
}

void finish(Job& job) {
    int ending = 0;
    while (waitpid(job.pid, &ending, 0) < 0 && errno == EINTR) {
    }
    job.done = true;
    job.seconds = std::chrono::duration<double>(steady_clock::now() - job.start).count();
    FaultRecords read = parse_fault_records(job.texts[records]);
    job.faults = std::move(read.faults);
    job.results_withheld = read.results_withheld;
    if (WIFSIGNALED(ending))
        add_fault(job, expectation_failed,
                  std::string("the process died of a signal: ") + strsignal(WTERMSIG(ending)));
    else if (!read.complete)
        add_fault(job, expectation_failed,
                  "the process ended before the scenario, with status " +
                      std::to_string(WEXITSTATUS(ending)));
}

void read_stream(Job& job, std::size_t stream) {
    std::array<char, 65536> part{};
    const ssize_t n = read(job.fds[stream], part.data(), part.size());
    if (n > 0) job.texts[stream].append(part.data(), static_cast<std::size_t>(n));
    if (n == 0) close_end(job.fds[stream]);
    if (std::all_of(job.fds.begin(), job.fds.end(), [](int fd) { return fd < 0; })) finish(job);
}

/// Waits until a running job says something, or the program is told to end; then this returns
/// false.
bool read_what_comes(std::span<Job> jobs, bool watch_signals) {
    std::vector<pollfd> fds{{watch_signals ? end_signals_fd() : -1, POLLIN, 0}};
    for (const Job& job : jobs)
        for (const int fd : job.fds)
            if (is_running(job)) fds.push_back({fd, POLLIN, 0});
    if (poll(fds.data(), fds.size(), -1) < 0) return true;
    std::size_t i = 1;
    for (Job& job : jobs) {
        if (!is_running(job)) continue;
        for (std::size_t stream = 0; stream < stream_count; ++stream)
            if (fds[i++].revents != 0) read_stream(job, stream);
    }
    return fds[0].revents == 0;
}

/// Says what the finished jobs have said, up to the first that still runs. `said` counts them.
void say_in_order(std::span<Job> jobs, std::size_t& said) {
    for (; said < jobs.size() && jobs[said].done; ++said) {
        write_stdout(std::exchange(jobs[said].texts[output], {}));
        (void)flush_stdout();
        // Of what standard error doesn't take nobody can learn.
        const std::string told = std::exchange(jobs[said].texts[errors], {});
        (void)std::fwrite(told.data(), 1, told.size(), stderr);
    }
}

void stop_all(std::span<Job> jobs) {
    for (Job& job : jobs) {
        if (is_running(job)) kill(job.pid, SIGTERM);
        if (job.pid != 0) continue;
        add_fault(job, expectation_failed, "not run: the program was stopped");
        job.done = true;
    }
}

void run_all(std::span<Job> jobs, const JobOptions& options) {
    std::size_t started = 0;
    std::size_t said = 0;
    bool stopped = false;
    for (;;) {
        auto running = std::count_if(jobs.begin(), jobs.end(), is_running);
        for (; !stopped && started < jobs.size() && running < options.side_by_side; ++started) {
            start(jobs, jobs[started], options.keep_output);
            if (is_running(jobs[started])) ++running;
        }
        say_in_order(jobs, said);
        if (running == 0) return;
        if (read_what_comes(jobs, !stopped)) continue;
        stopped = true;
        stop_all(jobs);
    }
}

int write_results(std::span<const Job> jobs, const std::string& path) {
    if (std::ranges::any_of(jobs, &Job::results_withheld)) return wrong_line;
    std::vector<CaseResult> results;
    for (const Job& job : jobs)
        results.push_back({job.name, job.seconds, job.faults});
    const std::string xml = junit_xml(results);
    const std::vector<std::uint8_t> bytes(xml.begin(), xml.end());
    const std::string fault = replace_file(path, bytes, Backup::none);
    if (fault.empty()) return all_well;
    tell_user("orvanel42-headless: error: can't write " + path + ": " + fault);
    return wrong_line;
}

/// What failed may stand far above what was printed last.
void tell_total(std::span<const Job> jobs) {
    const auto failed =
        std::ranges::count_if(jobs, [](const Job& job) { return !job.faults.empty(); });
    if (failed > 0)
        std::fprintf(stderr, "orvanel42-headless: %td of %zu scenarios failed\n", failed,
                     jobs.size());
}

}  // namespace

int run_jobs(std::span<const std::string> names, const JobOptions& options) {
    std::vector<Job> jobs;
    for (const std::string& name : names)
        jobs.push_back({.name = name,
                        .pid = 0,
                        .fds = {-1, -1, -1},
                        .texts = {},
                        .start = {},
                        .seconds = 0,
                        .faults = {},
                        .results_withheld = false,
                        .done = false});
    run_all(jobs, options);
    int status = all_well;
    for (const Job& job : jobs)
        for (const Fault& fault : job.faults)
            status = worse_status(status, fault.status);
    if (jobs.size() > 1) tell_total(jobs);
    if (!flush_stdout()) {
        tell_user("orvanel42-headless: error: " + stdout_fault());
        status = worse_status(status, wrong_line);
    }
    if (!options.junit.empty()) status = worse_status(status, write_results(jobs, options.junit));
    return status;
}

}  // namespace orvanel
