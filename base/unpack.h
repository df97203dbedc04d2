// unpack.h: the built-in data that is held compressed in the program (data/CMakeLists.txt).

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orvanel {

/// The block that was compressed into `source`; empty if that is damaged, or unpacks to anything
/// but `unpacked_size` bytes.
std::vector<std::uint8_t> unpack_blob(std::span<const std::uint8_t> source,
                                      std::size_t unpacked_size);

}  // namespace orvanel
