// places.h: where a byte of the module's language was written: in which file, line and column, of a
// kit too, or in which line of a scenario. The main thread says what is fed, the firmware asks.

#pragma once

#include "firmware/core/ground/trace.h"
#include "host/trace/source_map.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace orvanel {

struct SourcePlace {
    std::string file;       // as the user named it; empty if it isn't known
    int line, column;       // from 1; 0 for a file without lines
    int scenario_line = 0;  // that sent or fed it, from 1; 0 without one
};

/// What the feed `number` (link/feeds/feeds.h) reads, and the scenario's line that armed it, 0 for
/// none. `has_lines` says that the feed is the file byte by byte, not what was made of it.
void note_feed(std::uint32_t number, const std::string& file, bool has_lines, int scenario_line);

/// The kit that the module's image was made of, or will be: a macro that lies in the module as it
/// does in `image` was written where the map says. The newest one that fits holds; without a trace
/// there is but the newest.
void note_kit(SourceMap map, std::span<const std::uint8_t> image);

/// Whether a comment of such a kit lets a finding of the kind `name` at this place pass.
bool kit_allows(std::string_view name, const SourcePlace& place);

/// What a kit calls the item, empty if it has no name there.
std::string_view kit_name_of(Kind kind, int number);

/// The scenario's line that does something to the module, for bytes and touches without a place of
/// their own; 0 for none.
void set_acting_line(int scenario_line);

int acting_scenario_line();

/// Reads the file for the line of a byte, if it is there still.
SourcePlace place_of(const ByteSource& source);

/// `page.orv:3:1`, `page.orv` without lines, empty without a file.
std::string words_of(const SourcePlace& place);

/// No feed and no kit has a name. After the firmware's end.
void forget_places();

}  // namespace orvanel
