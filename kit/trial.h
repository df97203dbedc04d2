// trial.h: an image on trial. Its macros run through the module as on a device, in module time and
// with a finger on each key that they define, and what the module does in silence comes to light.

#pragma once

#include "firmware/core/language/eeprom_layout.h"
#include "host/trace/findings.h"
#include "host/trace/places.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace orvanel {

/// What is found, and where in the image or the stream: `touch macro 65 at 0x1A20, #ZF 3`; empty
/// for what has no place. Of a macro of a kit that has been noted (host/trace/places.h), without
/// the offset, and `place` says where it was written. `kind` and `number` name the item that is
/// meant as a whole, if one is.
struct TrialFinding {
    std::string where;
    Finding finding;
    SourcePlace place{};
    Kind kind = Kind::number;
    int number = -1;
};

/// What the trace would say, each mistake once. First `stream` is fed to a
/// module with an erased image, if it isn't empty. Then `image` is switched on with each kind of
/// reset, and each key and menu row that appears is touched; macros that are left run by
/// themselves, and a bar or character that these miss is not told, since it may be the business of
/// a page. Bounded for any content: what was left out is a finding.
std::vector<TrialFinding> try_image(std::span<const std::uint8_t> image,
                                    std::span<const std::uint8_t> stream);

// For the platform below the module: time has passed, the module has nothing to do, it has taken a
// byte.
void trial_time_passes(int ms);
void trial_idles();
void trial_byte_taken();

}  // namespace orvanel
