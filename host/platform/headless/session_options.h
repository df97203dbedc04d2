// session_options.h: what the command line says of a session.

#pragma once

#include "host/scenario/expectations.h"
#include "host/trace/trace_writer.h"

#include <string>

namespace orvanel {

struct SessionOptions {
    std::string save_image;  // the file that the image goes to, if it was programmed; empty: none
    std::string serial;      // what stands behind COM1, in real time; empty: what the settings say
    PictureOptions pictures;
    TraceOptions trace;
    bool json;  // answers go to a program, one object for each line
};

/// Set before run_session (session.h), then left alone.
extern SessionOptions session_options;

}  // namespace orvanel
