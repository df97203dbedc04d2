// constants.h: the names of a kit as constants, for the firmware of a device and for its tests.

#pragma once

#include "kit/kit.h"

#include <string>

namespace orvanel {

/// A header in C: `#define PAGE_FONT_TITLE 1`, where the prefix comes from the name of the file
/// that it is for. Two names that would become one constant are a fault.
std::string header_of(const Kit& kit, const std::string& path, Faults& faults);

/// A module in Python: `FONT_TITLE = 1`.
std::string python_of(const Kit& kit, Faults& faults);

}  // namespace orvanel
