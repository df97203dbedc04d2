// resources.h: the font and picture sections of a kit, from their settings to the bytes of the
// image.

#pragma once

#include "kit/names.h"
#include "kit/sections.h"

#include <functional>
#include <string>
#include <vector>

namespace orvanel {

/// Reads the section's settings and files; `at` and `same` of the item are its own affair, told by
/// `take_place`, which gives true if the setting was one of them. The files join `inputs`. Empty,
/// and told, on a fault.
using TakePlace = std::function<bool(Setting& setting)>;
Bytes font_of_section(const Section& section, const Names& names, const TakePlace& take_place,
                      std::vector<std::string>& inputs, Faults& faults);
Bytes picture_of_section(const Section& section, const Names& names, const TakePlace& take_place,
                         std::vector<std::string>& inputs, Faults& faults);

}  // namespace orvanel
