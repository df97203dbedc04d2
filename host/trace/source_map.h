// source_map.h: where the bytes of an image were written: the lines of the kit that it was built
// of, the names that this gives to fonts, pictures and macros, and what its comments allow.
// docs/reference/formats.md, "Map of an image", tells the form that files have.

#pragma once

#include "firmware/core/language/eeprom_layout.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

/// The bytes from `offset` on, up to the next span, were written from `line`, `column` of a file
/// on, each of them `step` columns after the one before.
struct SourceSpan {
    int offset;        // in the image
    int file;          // index into `files`; -1: nobody wrote these bytes
    int line, column;  // from 1
    int step;          // 0..2
};

struct MappedItem {
    Kind kind;
    int number;
    int file, line, column;  // of its heading
    std::string name;        // empty if it has none
};

struct LineRange {
    int file, first, last;  // lines, both inclusive
};

/// What is found in these lines and is of the kind `finding` is meant.
struct MappedAllow {
    std::string finding;
    int file, line;  // of the comment that says so
    std::vector<LineRange> lines;
};

struct SourceMap {
    std::vector<std::string> files;
    std::vector<MappedItem> items;
    std::vector<SourceSpan> spans;  // by ascending offset
    std::vector<MappedAllow> allowed;
    int size;           // bytes of the image
    std::uint32_t sum;  // CRC-32 of these
};

std::uint32_t image_sum(std::span<const std::uint8_t> image);

/// The text of a file.
std::string text_of(const SourceMap& map);

/// Reads a file's text. The result is empty on success, else what is wrong and in which line; the
/// map then says nothing.
std::string read_map(std::string_view text, SourceMap& map);

/// Reads the map of an image from a file. The result is empty on success, else what is wrong with
/// the file, or that it is another image's map.
std::string load_map(const std::string& path, std::span<const std::uint8_t> image, SourceMap& map);

/// Null if there is none.
const MappedItem* find_item(const SourceMap& map, Kind kind, int number);

/// The span of the byte at `offset`, null if nobody wrote it.
const SourceSpan* find_span(const SourceMap& map, int offset);

/// Which entry of `allowed` lets this pass, -1 if none does.
int find_allow(const SourceMap& map, std::string_view finding, std::string_view file, int line);

}  // namespace orvanel
