// named_files.h: the files that a scenario names, held against those that its run writes: a trace
// would cut off what the scenario is about to read.

#pragma once

#include <cstdint>
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

/// What a line of a scenario does with the file that it names.
enum class FileUse : std::uint8_t {
    plain,     // reads or writes it, and no other one
    included,  // runs its lines, which may name more
    opened,    // gives it to the module; a kit has more files
};

struct NamedFile {
    std::string path;  // empty for none
    FileUse use;
};

/// Whether an output is a file that this scenario reads, whose lines `file_in` takes apart: one
/// that a line names, here or in what is included, or that a kit is made of which it opens. The
/// option, and what is wrong with it, else both are empty. Looks into plain files only; what comes
/// from a pipe shows line by line.
RunOutput named_output(const std::string& scenario, NamedFile (*file_in)(std::string_view line));

/// The output that a kit is made of, and what is wrong with it, else both are empty.
RunOutput output_in_kit(const std::string& kit);

/// Empty unless the file that the running line names is such a file. From then on it is withheld.
std::string output_clash(const NamedFile& file);

/// Whether a line has named the output: then it must not be written.
bool is_withheld(const std::string& path);

/// For an output that is written all along, while lines come from a pipe: what it held before the
/// run waits beside it, and is put back at the end if the output has been withheld.
void set_former_aside(const std::string& path);
void settle_former();

}  // namespace orvanel
