// stream.h: an image as the command stream that programs it, with what stands around its blocks;
// and such a stream played back to an image.

#pragma once

#include "kit/kit.h"

#include <span>

namespace orvanel {

/// The stream. Its blocks cover the image from 0 to its CRC, or to the last byte that isn't
/// erased. Says in `faults` what can't be.
Bytes stream_of(const Kit& kit, std::span<const std::uint8_t> image, Faults& faults);

/// What the writes and clears of a stream leave in an erased memory of `size` bytes. Bytes beyond
/// it are dropped.
Bytes image_from_stream(std::span<const std::uint8_t> stream, int size);

}  // namespace orvanel
