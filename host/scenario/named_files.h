// named_files.h: the files that a scenario names, held against those that its run writes: a trace
// would cut off what the scenario is about to read.

#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

/// A file that the command line has the run write, and the option that says so.
struct RunOutput {
    std::string option, path;
};

/// All of them. Set before the run, then left alone.
extern std::vector<RunOutput> run_outputs;

/// Whether an output is a file that a line of this scenario names, of which `path_in` gives the
/// path: the option, and what is wrong with it, else both are empty. Looks into a plain file only;
/// what comes from a pipe shows line by line.
RunOutput named_output(const std::string& scenario, std::string (*path_in)(std::string_view line));

/// Empty unless the path, which the running line names, is such a file. From then on it is
/// withheld.
std::string output_clash(const std::string& path);

/// Whether a line has named the output: then it must not be written.
bool is_withheld(const std::string& path);

}  // namespace orvanel
