// fault.h: what is wrong with a source, and where.

#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvanel {

/// A character of a source file.
struct Place {
    std::string file;  // as the user named it, or as an include line did
    int line;          // from 1; 0: the file as a whole
    int column;        // characters, from 1; 0: the line as a whole
};

/// Thrown where reading a source can't go on; whoever holds the next line or section catches it.
struct Fault : std::runtime_error {
    Fault(Place where, const std::string& what_is_wrong)
        : std::runtime_error(what_is_wrong), place(std::move(where)) {}
    Place place;
};

/// All that is wrong, in the order in which it was found.
using Faults = std::vector<Fault>;

/// Those of a file in the order of its lines.
void sort_by_place(Faults& faults);

/// `FILE:LINE:COLUMN: error: ...`, without what isn't known of the place.
std::string message_of(const Fault& fault);

/// The messages of all faults, those of a file in the order of its lines; of very many the first,
/// and how many more there are, in the program's name.
std::vector<std::string> messages_of(Faults faults, const std::string& program);

}  // namespace orvanel
