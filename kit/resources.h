// resources.h: the font and picture sections of a kit, from their settings to the bytes of the
// image.

#pragma once

#include "kit/names.h"
#include "kit/sections.h"

#include <string>
#include <vector>

namespace orvanel {

/// Reads the settings of the section, which holds no `at` and no `same` any more, and its files,
/// which join `inputs`. `shared`: the item has the bytes of another, and so no file of its own.
/// `faults` are those of the item; as long as there are any, no file is read. Empty on a fault.
Bytes font_of_section(const Section& section, bool shared, const Names& names,
                      std::vector<std::string>& inputs, Faults& faults);
Bytes picture_of_section(const Section& section, bool shared, const Names& names,
                         std::vector<std::string>& inputs, Faults& faults);

}  // namespace orvanel
