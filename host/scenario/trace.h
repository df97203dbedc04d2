// trace.h: the trace of a run: one line for each command of the module's language as it completes,
// with what the module did with it in silence, and the touches and answers in between.

#pragma once

#include <cstdint>
#include <string>

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

/// Listens to the module from now on, if the options want it; what `file` held is lost. Before the
/// firmware starts.
void start_trace(const TraceOptions& options);

/// Writes what is unfinished and reports the faults: remarks, if they are to be, and a file that
/// can't be written. Behind the firmware's end.
void finish_trace();

}  // namespace orvanel
