// trace_writer.h: the trace of a run: one line for each command of the module's language as it
// completes, with what the module did with it in silence, and the touches and answers in between.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvanel {

enum class TraceForm : std::uint8_t {
    none,  // nothing is written
    text,  // `MS SOURCE BYTES | COMMAND | ROLE | VERDICT`
    json,  // one object a line
};

struct TraceOptions {
    TraceForm form;
    std::string file;  // `-` for standard error
    bool strict;       // a verdict other than `ok` is a failed expectation
};

/// Listens to the module from now on, if the options want it; what `file` held is lost. `clock_us`
/// gives the time of each line, in microseconds. Before the firmware starts.
void start_trace(const TraceOptions& options, std::int64_t (*clock_us)());

struct TraceFaults {
    std::string unwritten;             // why the file can't be written, empty if it is
    std::vector<std::string> remarks;  // the lines whose verdict isn't `ok`, if they are faults
};

/// Writes what is unfinished. After the firmware's end.
TraceFaults finish_trace();

}  // namespace orvanel
