// diff.h: what differs between two images, in the words of a listing.

#pragma once

#include "kit/fault.h"

#include <span>
#include <string>

namespace orvanel {

/// Lines for objects that are in one image only (- and +), that differ or have moved, and for
/// bytes that belong to none. Empty if the images are the same.
std::string difference_of(std::span<const std::uint8_t> before,
                          std::span<const std::uint8_t> after);

}  // namespace orvanel
