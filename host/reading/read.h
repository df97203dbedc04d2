// read.h: what can be read on the glass by the module's own glyphs: a help for the person who looks
// for a text. The module stands still meanwhile, and its state stays as it is.

#pragma once

#include "host/reading/find.h"

#include <cstdint>
#include <vector>

namespace orvanel {

struct ReadText {
    TextPlace place;
    std::vector<std::uint8_t> codes;
};

/// The texts on the glass, from top to bottom and from left to right. Where several ways of reading
/// the same dots exist, the longest goes first. A text is glyphs of one look side by side, with
/// single blanks; one without a letter or a digit, or of one or two characters, has to stand free.
std::vector<ReadText> read_texts(const DotRows& glass);

}  // namespace orvanel
