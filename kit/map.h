// map.h: where in a kit's sources each byte of its image was written.

#pragma once

#include "host/trace/source_map.h"
#include "kit/image.h"

namespace orvanel {

/// A macro's and a [bytes] section's bytes were written in their lines, those of fonts, pictures
/// and tables in the heading of their item. Nobody wrote what fills the image, its length and CRC.
SourceMap map_of(const Kit& kit, const LaidOut& laid_out);

}  // namespace orvanel
