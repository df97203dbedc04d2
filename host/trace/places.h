// places.h: where a byte of the module's language was written: in which file, line and column, or
// in which line of a scenario. The main thread says what is fed, the firmware asks.

#pragma once

#include "firmware/core/ground/trace.h"

#include <cstdint>
#include <string>

namespace orvanel {

struct Place {
    std::string file;       // as the user named it; empty if it isn't known
    int line, column;       // from 1; 0 for a file without lines
    int scenario_line = 0;  // that sent or fed it, from 1; 0 without one
};

/// What the feed `number` (link/feeds/feeds.h) reads, and the scenario's line that armed it, 0 for
/// none. `has_lines` says that the feed is the file byte by byte, not what was made of it.
void note_feed(std::uint32_t number, const std::string& file, bool has_lines, int scenario_line);

/// The scenario's line that does something to the module, for bytes and touches without a place of
/// their own; 0 for none.
void set_acting_line(int scenario_line);

int acting_scenario_line();

/// Reads the file for the line of a byte, if it is there still.
Place place_of(const ByteSource& source);

/// `page.orv:3:1`, `page.orv` without lines, empty without a file.
std::string words_of(const Place& place);

/// No feed has a name. After the firmware's end.
void forget_places();

}  // namespace orvanel
