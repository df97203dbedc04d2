// jobs.h: several scenarios, each on a fresh module in a process of its own, and their results.

#pragma once

#include <span>
#include <string>

namespace orvanel {

/// How scenarios run in processes.
struct JobOptions {
    int side_by_side;   // processes at once, 1 or more
    bool keep_output;   // hold back what each one says, and say it in the order of the names
    std::string junit;  // file for the results; empty: none
};

/// Runs each scenario in a process of its own. A process that dies is a failed scenario and not the
/// end of the run. No thread may have been started before. The result is the exit status.
int run_jobs(std::span<const std::string> names, const JobOptions& options);

}  // namespace orvanel
