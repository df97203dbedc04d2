// glass.h: the glass as a scenario looks for texts on it. The module stands still meanwhile
// (ModuleHalt, world.h).

#pragma once

#include "host/reading/find.h"
#include "host/scenario/arguments.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orvanel {

/// What the glass shows at this moment.
DotRows present_glass();

/// Whether one area is near another: at most 60 dots beside it and 20 above or below.
bool is_near(const DrawArea& a, const DrawArea& b);

/// Dots from one area to another, along and across, squared and added; 0 if they touch.
int distance_between(const DrawArea& a, const DrawArea& b);

/// Whether the text stands there.
bool shows_text(std::span<const std::uint8_t> codes, const TextWhere& where);

/// What stands there instead, for a message that begins with the text that was looked for.
std::string why_unread(std::span<const std::uint8_t> codes, const TextWhere& where);

}  // namespace orvanel
