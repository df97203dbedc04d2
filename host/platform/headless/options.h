// options.h: the command line of orvanel42-headless.

#pragma once

#include "host/platform/headless/session_options.h"

#include <string>
#include <vector>

namespace orvanel {

struct Options {
    std::string folder;  // the program's folder; empty for none
    std::string image;   // file of the EEPROM image; empty: a blank one. Not with a folder
    std::string kit;     // file of a kit to take the image from; empty for none
    std::string map;     // of the file `image`; empty for none
    int mem_kib;         // 32 or 64. Not with a folder
    std::string junit;
    int jobs;
    bool real_time;
    std::string protocol;  // "plain" or "pactlink"; empty: what the settings say
    SessionOptions session;
    std::string strict;                  // as it was given, empty if it wasn't
    bool commands;                       // print the command reference and do nothing else
    std::vector<std::string> scenarios;  // an empty name: none, until a signal comes
};

/// Reads the command line. -1 to go on; else the exit status, with everything said.
int parse_options(int argc, char** argv, Options& options);

}  // namespace orvanel
