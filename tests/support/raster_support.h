// raster_support.h: the raster engine from a fresh start, and its planes as text.

#pragma once

#include "firmware/core/ground/draw_area.h"

#include <cstdint>
#include <random>
#include <string>

namespace orvanel {

/// Power-on of the raster layer and of the platform, and zero for whatever outlives a reset. The
/// terminal's plane is shown, the graphics planes are the drawing target.
void fresh_raster();

/// The dots of an area of a plane, '#' for a dark one, each row and the text's start followed by a
/// line break.
std::string dots(const std::uint8_t* plane, DrawArea area);

/// Fills all planes and slot buffers with noise.
void scribble(std::mt19937& random);

/// One number of low..high.
int pick(std::mt19937& random, int low, int high);

}  // namespace orvanel
