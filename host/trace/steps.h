// steps.h: the events of the module's work put together into steps: one for each command, or
// stretch of text for the terminal, with all that is to be said of it.

#pragma once

#include "firmware/core/ground/trace.h"
#include "host/trace/step.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orvanel {

/// Puts the events together. Set `done` before the first event; it is called for each step as it
/// ends, and for what no command asked for, such as a timed macro that isn't there, with a step
/// without bytes.
struct StepReader {
    std::function<void(const Step&)> done;

    bool open = false;
    Step step{};
    ByteSource last_source{};
    std::uint8_t last_byte = 0;
    bool in_reset = false;     // what a reset finds missing is nobody's command
    bool out_of_step = false;  // the last command had a mistake whose rest comes as text
    bool took_esc = false;     // the last command's last number is the byte ESC
    bool in_comment = false;   // text from a ; to the end of the line, while the terminal is off
    int wrapped_from = 0;      // of the last number that was
    int wrapped_to = 0;        //
    bool waits = false;        // the command waits for a byte
    bool left_macro = false;   // the command began in a macro that has ended
    int touch_level = 0;       // macro level that a touch started, 0 for none
};

void take_event(StepReader& reader, const TraceEvent& event);

/// Ends the step that is open, if one is.
void end_step(StepReader& reader);

}  // namespace orvanel
