// names.h: names for the numbers of a kit, and the sums they may stand in.

#pragma once

#include "firmware/core/language/eeprom_layout.h"
#include "kit/source.h"

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

/// `font`, `picture`, `power-on macro`, ... as headings and listings have it.
std::string_view kind_name(Kind kind);

struct Named {
    Kind kind;
    int number;
};

using Names = std::map<std::string, Named, std::less<>>;

/// The names alone, for a message.
std::vector<std::string_view> all_of(const Names& names);

/// Numbers and names joined by + and -, e.g. `left + 8`. Throws unless the sum lies in min..max
/// and its names are plain numbers or of the kind that is wanted. `what` names the value in
/// messages.
int take_sum(Scanner& scanner, const Names& names, Kind wanted, std::string_view what, int min,
             int max);

}  // namespace orvanel
