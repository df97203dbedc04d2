// pbm.h: the text in a portable bitmap (PBM, of the netpbm formats): its head, and the white space
// and comments between its numbers.

#pragma once

#include <cstdint>
#include <span>

namespace orvanel {

/// Steps over white space and comments.
void skip_pbm_space(std::span<const std::uint8_t>& rest);

/// The next number, at most 1,000,000; -1 if none is there.
long take_pbm_number(std::span<const std::uint8_t>& rest);

}  // namespace orvanel
