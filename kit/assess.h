// assess.h: all that is to be said of a kit, an image or a stream, each with its place in the kit's
// sources where they are known.

#pragma once

#include "host/trace/findings.h"
#include "host/trace/places.h"
#include "kit/build.h"

#include <string>
#include <vector>

namespace orvanel {

struct Assessment {
    SourcePlace place;  // empty if it isn't known
    std::string where;  // macro and command, empty for what has none
    Finding finding;
};

/// What the image's bytes say (check.h), what a trial brings to light (trial.h), and comments of
/// the kit that allow what isn't found. What they allow is left out.
std::vector<Assessment> assess(const Content& content);

/// `page.kit:27:28: hint: touch macro 65, #ZF 3: font 3 is missing [no-font]`; `file` stands for
/// the place if that isn't known.
std::string line_of(const Assessment& assessment, const std::string& file);

}  // namespace orvanel
