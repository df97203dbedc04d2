// outline.h: fonts out of TrueType and OpenType files, hinted and drawn without grays.

#pragma once

#include "kit/font.h"

#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

/// Draws the wanted characters at `size` dots to the em. Those that the file lacks are left out.
/// The result is empty on success, else what is wrong with the file.
std::string read_outlines(std::span<const std::uint8_t> file, int size, const Codes& wanted,
                          Font& font);

}  // namespace orvanel
