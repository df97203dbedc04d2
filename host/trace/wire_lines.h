// wire_lines.h: what happens on the line, in words, and what is to be said of it.

#pragma once

#include "host/trace/findings.h"
#include "link/ground/wire.h"

#include <string>
#include <vector>

namespace orvanel {

/// `plain bytes`, `control frame S`, `data frame with 5 bytes`, `answer frame with 8 bytes`,
/// `acknowledged`, `refused`, `time limit`.
std::string wire_words(const WireEvent& event);

std::vector<Finding> wire_findings(const WireEvent& event);

}  // namespace orvanel
