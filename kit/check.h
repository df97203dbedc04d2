// check.h: what is wrong with an image, as far as its bytes tell.

#pragma once

#include "firmware/core/language/eeprom_layout.h"
#include "host/trace/findings.h"

#include <span>
#include <vector>

namespace orvanel {

/// What is found, and in which item of the image; of kind `number` if in none.
struct ImageFinding {
    Finding finding;
    Kind kind;
    int number;
};

/// Bad offsets, overlaps, a wrong length or CRC, macros that start themselves.
std::vector<ImageFinding> findings_of(std::span<const std::uint8_t> image);

}  // namespace orvanel
