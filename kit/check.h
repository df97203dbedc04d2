// check.h: what is wrong with an image, as far as its bytes tell.

#pragma once

#include "host/trace/findings.h"

#include <span>
#include <vector>

namespace orvanel {

/// One finding a line: bad offsets, overlaps, a wrong length or CRC, macros that start themselves.
std::vector<Finding> findings_of(std::span<const std::uint8_t> image);

}  // namespace orvanel
