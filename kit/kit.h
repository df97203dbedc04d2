// kit.h: what a kit source says, with its fonts and pictures read and its macros assembled.
// docs/reference/kit.md tells the syntax.

#pragma once

#include "kit/names.h"

#include <functional>
#include <string>
#include <vector>

namespace orvanel {

/// Where each byte was written; both empty for what was made of files.
struct Written {
    struct Line {
        std::size_t first;  // of its bytes
        std::string file;
        int number;
    };
    std::vector<Line> lines;
    Columns columns;
};

/// A font, a picture or a macro.
struct Item {
    Kind kind;
    int number;
    std::string name;  // empty if it has none
    Place place;       // of its heading
    int at;            // image offset that the source asks for, -1 if it leaves it open
    int same;          // index of the item whose bytes it shares, -1 if it has its own
    Bytes bytes;
    Written written;
};

/// Bytes at a fixed place of the image, over whatever else would be there.
struct Patch {
    Place place;
    int at;
    Bytes bytes;
    Written written;
};

/// A comment `; allow NAME`: what is found in the next line, or in the next item, is meant.
struct Allow {
    struct Lines {
        std::string file;
        int first, last;
    };
    std::string finding;
    Place place;
    std::vector<Lines> lines;
};

/// What stands around the image's blocks in a stream.
struct StreamPlan {
    int block;     // bytes of the image in each write
    int length;    // bytes of the whole stream, -1: as it comes
    bool restart;  // ends in a restart
    std::vector<SourceLine> before, after_block, after;
};

struct Kit {
    std::string file;
    std::vector<std::string> inputs;  // every file that it was read from, in any order
    int memory;                       // bytes of the EEPROM
    int length;                       // image length, -1: as it comes
    int crc;                          // -1: as it comes
    std::vector<Item> items;          // in the order of the source
    std::vector<Patch> patches;
    StreamPlan stream;
    Names names;
    std::vector<Allow> allowed;
};

/// Called with what is being worked on.
using Progress = std::function<void(const std::string& what)>;

/// Reads the kit from its lines. What can't be read is left out and has its fault in `faults`.
Kit read_kit(const std::string& file, const std::vector<SourceLine>& lines,
             const Progress& progress, Faults& faults);

/// `normal macro 5 (clock)`, for messages.
std::string title_of(const Item& item);

/// The bytes of an item, its own or shared.
const Bytes& bytes_of(const Kit& kit, const Item& item);

}  // namespace orvanel
