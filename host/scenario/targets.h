// targets.h: what a finger is to touch, by what stands on it: areas, bars and rows found in the
// module's tables, and the dot where a finger hits them. The module stands still meanwhile
// (ModuleHalt, world.h).

#pragma once

#include "firmware/touch/areas.h"
#include "host/scenario/arguments.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvanel {

/// A dot of the glass.
struct Dot {
    int x, y;
};

/// What was found, or why nothing was: `fault` is empty then, or not.
struct FoundDot {
    Dot dot;
    std::string fault;
};

/// What each area says, row by row of the table: the label that it was defined with, or where there
/// is none what can be read inside it. Lines and texts are parted by a blank.
using Label = std::vector<std::uint8_t>;
std::vector<Label> area_labels();

/// The word of a type, as `areas` prints it.
std::string word_of(AreaType type);

/// The dot that a tap on the target touches.
FoundDot find_tap(const Target& target);

/// The same in the row of the open list that says so.
FoundDot find_row(const Target& target);

/// Where a finger sets a bar to a value, or to so many percent of its scale; and where it would
/// leave the bar as it is, none if no dot does.
struct BarGoal {
    bool percent;
    int value;
};
struct FoundDrag {
    std::optional<Dot> from;
    Dot to;
    std::string fault;
};
FoundDrag find_drag(const Target& bar, BarGoal goal);

/// Why no finger is heard at all; empty if one is.
std::string deaf_to_fingers();

}  // namespace orvanel
