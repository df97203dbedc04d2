// find.h: where on the glass a text stands, dot by dot: in each font of the module, at each zoom
// and rotation, plain and inverted. The module stands still meanwhile, and its state stays as it
// is.

#pragma once

#include "host/reading/drawing.h"

#include <cstdint>
#include <span>
#include <vector>

namespace orvanel {

struct TextPlace {
    DrawArea area;  // its glyph cells
    TextLook look;
};

/// Each place where the cells of the text stand exactly, within `inside`. A text that shows no dot
/// stands nowhere.
std::vector<TextPlace> find_text(const DotRows& glass, std::span<const std::uint8_t> codes,
                                 const DrawArea& inside);

/// Whether more of the same text goes on at either end: a glyph that shows a dot, next to the place
/// or after one blank.
bool goes_on(const DotRows& glass, const TextPlace& place);

}  // namespace orvanel
