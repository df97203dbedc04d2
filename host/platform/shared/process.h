// process.h: what a process of ours puts right about its surroundings before anything else.

#pragma once

namespace orvanel {

/// Makes faults of files and pipes come back as such, where the system would end the process for
/// them; and fills the descriptors 0, 1 and 2 that are closed, so that no file of ours becomes
/// standard input or output: reading finds the end, writing fails. The first call of main.
void prepare_process();

}  // namespace orvanel
