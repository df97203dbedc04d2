// output.h: what the program writes: its words, and files, which a signal or a fault leaves whole
// or as they were.

#pragma once

#include "kit/dump.h"
#include "kit/fault.h"

#include <string>
#include <vector>

namespace orvanel {

constexpr const char* program_name = "orvanel42-kit";

/// Tells what is wrong, in one line on standard error that begins with the program's name.
void tell_error(const std::string& what);

/// Puts text on standard output, as visible_lines has it (base/visible.h).
void put(const std::string& text);

/// Writes a file in one step; who wants the program to end waits for that. False, after a message,
/// on a failure.
bool write_output(const std::string& path, const Bytes& content);

/// Writes all the files into a folder, or none of them. The folder is made if it isn't there; else
/// it has to be empty, but for what a former call had to leave half done. False, after a message,
/// on a failure.
bool write_folder(const std::string& path, const std::vector<DumpFile>& files);

}  // namespace orvanel
