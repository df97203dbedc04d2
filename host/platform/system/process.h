// process.h: what a process of ours puts right about its surroundings before anything else.

#pragma once

#include <string>

namespace orvanel {

/// The folder that a program lives in if the user names none: its own, or where that can't be
/// written the one in the user's data folder. Empty if there is neither.
std::string own_folder();

/// The folder of ours in the user's data folder, which need not be there. Empty if there is none.
std::string data_folder();

/// Makes faults of files and pipes come back as such, where the system would end the process for
/// them; and fills the descriptors 0, 1 and 2 that are closed, so that no file of ours becomes
/// standard input or output: reading finds the end, writing fails. The first call of main.
void prepare_process();

/// Flushes standard output. False if it hasn't taken all that was written, which is said in the
/// program's name; but not if who read it has closed the pipe, having seen enough.
bool output_is_whole(const char* program);

}  // namespace orvanel
