// dump.h: an image turned back into a kit, from which build makes the same image again.

#pragma once

#include "kit/fault.h"

#include <span>
#include <string>
#include <vector>

namespace orvanel {

struct DumpFile {
    std::string name;
    Bytes content;
};

/// The files of the kit, its source NAME.kit first; pictures as PNG, fonts as BDF. What neither
/// can stand for comes as bytes of the source, so that any image at all comes out whole.
std::vector<DumpFile> dump_of(std::span<const std::uint8_t> image, const std::string& name);

}  // namespace orvanel
