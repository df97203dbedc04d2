// sources.h: where the lines of a scenario come from: its own file or standard input, and on top of
// it the files that it includes.

#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

namespace orvanel {

/// The longest line of a scenario.
constexpr std::size_t max_line_bytes = std::size_t{1} << 20;

/// A file of lines. An included one is read whole.
struct Source {
    std::string name;
    int fd;                   // -1 for a file that was read
    bool ended;               // nothing more comes from it
    std::vector<char> input;  // read but not yet run
    std::ptrdiff_t searched;  // of it, known to hold no end of line
    bool command_seen;
    int outer_line;  // the line of the source below that included it
};

/// The scenario first, and last the file whose lines run. The names in it stay where they are.
extern std::deque<Source> sources;

/// Cuts the next line off what the source has, with its end, and counts it. False if it isn't all
/// there yet.
bool take_line(Source& source, std::string& line);

/// One read of a source, which waits if nothing is there. What goes wrong ends the scenario.
void read_input(Source& source);

/// Runs the lines of a file before whatever comes next; paths in it start from its own folder. What
/// is wrong with the file is told.
void include_scenario(const std::string& path);

/// The included file is at its end, or is left because one of its lines was wrong.
void leave_source();

}  // namespace orvanel
