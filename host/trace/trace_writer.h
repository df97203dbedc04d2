// trace_writer.h: the trace of a run: one line for each command of the module's language as it
// completes, with what the module did with it in silence, and the touches and answers in between.

#pragma once

#include "host/trace/findings.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace orvanel {

enum class TraceForm : std::uint8_t {
    none,  // nothing is written
    text,  // `MS SOURCE BYTES | COMMAND | ROLE | VERDICT`
    json,  // one object a line
};

/// Which findings make a run fail.
enum class Strictness : std::uint8_t { off, remarks, hints };

/// What is written, by the layer it comes from.
struct TraceLayers {
    bool wire = true, command = true, touch = true, answer = true;
};

/// Takes a list as `wire,touch`. The result is what is wrong with it, empty if nothing.
std::string take_layers(const std::string& list, TraceLayers& layers);

struct TraceOptions {
    TraceForm form;
    std::string file;  // `-` for standard error
    Strictness strictness;
    TraceLayers layers{};
};

/// A finding that counts, with the place where it was made.
struct Mistake {
    std::string place;  // `page.orv:3:1`; empty: the scenario's line
    int scenario_line;  // that sent, fed or did it, 0 for none
    Finding finding;
    std::string where;  // the command, empty for what is none
    std::size_t count;  // how often the same was made
};

/// `page.orv:3:1: hint: # Z F 2: the number took '#' along: write #ZF2, [number-took] (page.scn:2)`
std::string words_of(const Mistake& mistake, const std::string& scenario);

/// Listens to the module from now on, if the options want it; what `file` held is lost. `clock_us`
/// gives the time of each line, in microseconds. Before the firmware starts.
void start_trace(const TraceOptions& options, std::int64_t (*clock_us)());

/// Whether there is a trace for somebody to read.
bool trace_is_written();

/// A finding of the host's own, in a line of the scenario, 0 for none. Nothing without a trace.
void tell_finding(const Finding& finding, int scenario_line);

/// What is found with this line of the scenario, or with what it sends or feeds, doesn't count if
/// it is of the kind `name` (findings.h).
void allow_finding(const std::string& name, int scenario_line);

struct TraceFaults {
    std::string unwritten;          // why the file can't be written, empty if it is
    std::vector<Mistake> mistakes;  // in the order in which they were first made
    std::size_t unkept;             // further ones
};

/// The mistakes since the last call, and how many more there were; finish_trace gives what is left.
/// Only while the module stands still and nothing comes in on the line.
std::vector<Mistake> take_mistakes(std::size_t& unkept);

/// Writes what is unfinished. After the firmware's end.
TraceFaults finish_trace();

}  // namespace orvanel
