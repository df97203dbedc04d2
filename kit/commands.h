// commands.h: lines of a macro to the bytes of the command language, and back.

#pragma once

#include "kit/forms.h"

#include <functional>
#include <span>
#include <string>
#include <vector>

namespace orvanel {

/// What the lines may name.
struct Assembly {
    const Names* names;
    /// The bytes of a picture, for `#UL x,y,picture NAME`; empty if there is none.
    std::function<Bytes(int number)> picture;
};

/// Appends the bytes of one line: a command under ESC or #, `text`, or `bytes`. A blank line is
/// none. `columns` gets as many entries as `bytes` has, for those that the line adds. Throws a
/// Fault.
void assemble_line(const SourceLine& line, const Assembly& assembly, Bytes& bytes,
                   Columns* columns = nullptr);

/// Every command with the names of its parameters, one a line, as in `#GD x1,y1,x2,y2`. A name of
/// two words has a blank in it.
std::string command_list();

/// The lines from which assemble_line makes exactly these bytes. What is no command written in the
/// plainest way comes as `text` or `bytes`.
std::vector<std::string> lines_from(std::span<const std::uint8_t> bytes);

}  // namespace orvanel
