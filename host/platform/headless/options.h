// options.h: the command line of orvanel42-headless.

#pragma once

#include "host/trace/trace_writer.h"

#include <string>
#include <vector>

namespace orvanel {

struct Options {
    std::string folder;      // the program's folder; empty for none
    std::string image;       // file of the EEPROM image; empty: a blank one. Not with a folder
    int mem_kib;             // 32 or 64. Not with a folder
    std::string save_image;  // the file it goes to at the end, if it was programmed
    bool update;             // as in PictureOptions
    bool update_missing;
    std::string out_folder;
    std::string junit;
    int jobs;
    bool real_time;
    std::string serial;    // what stands behind COM1, in real time; empty for none
    std::string protocol;  // "plain" or "pactlink"; empty: what the settings say
    TraceOptions trace;
    bool commands;                       // print the command reference and do nothing else
    std::vector<std::string> scenarios;  // an empty name: none, until a signal comes
};

/// Reads the command line. -1 to go on; else the exit status, with everything said.
int parse_options(int argc, char** argv, Options& options);

}  // namespace orvanel
