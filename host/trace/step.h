// step.h: what one line of a trace is made of: a command, or a stretch of text for the terminal,
// with all that is to be said of it.

#pragma once

#include "firmware/core/ground/trace.h"
#include "host/trace/findings.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvanel {

constexpr std::size_t max_step_bytes = 4096;  // kept of a command
constexpr std::size_t max_text_bytes = 64;    // of text for the terminal to a step

/// A number of a command, and where its bytes lie in the step's.
struct StepNumber {
    int value;
    std::size_t begin;  // of what was read for it, also what was skipped
    std::size_t end;    // after the byte that ended it
};

struct Step {
    bool is_text;
    ByteSource source;                // of the first byte
    std::vector<std::uint8_t> bytes;  // the first max_step_bytes of `count`
    std::size_t count;
    std::uint8_t group, op;  // letters as the module read them, 0 for none
    bool by_touch;           // a touch started the macro that it is in, or that one's
    std::vector<StepNumber> numbers;
    std::size_t raw_start;            // bytes from here on are no numbers
    const char* role;                 // null if undefined
    std::vector<Block> blocks;        // of text that it laid out
    int moved;                        // dots by which the last of these was moved
    std::vector<int> missing_glyphs;  // codes, each once
    bool is_lost;     // there is text for the terminal that nobody sees and that is no comment
    ByteSource lost;  // the first such byte
    std::vector<Finding> findings;
};

}  // namespace orvanel
