// sections.h: a kit source taken apart at its headings, before anything in it is looked at.

#pragma once

#include "kit/names.h"

#include <string>
#include <vector>

namespace orvanel {

enum class Topic {
    image,
    stream,
    stream_before,
    stream_after_block,
    stream_after,
    constants,
    item,
    bytes,
};

struct Section {
    Topic topic;
    Kind kind;         // of Topic::item
    int number;        // of an item, -1 if the heading has none; the offset of Topic::bytes
    std::string name;  // empty if the heading has none
    Place place;       // of the heading
    std::vector<SourceLine> lines;
};

/// Splits the lines. What stands under a heading that can't be read is left out.
std::vector<Section> sections_of(const std::vector<SourceLine>& lines, Faults& faults);

/// The word NAME of a line that is the comment `; allow NAME` alone; empty if it isn't one.
std::string_view allowed_by(const SourceLine& line);

/// A line `key = value`.
struct Setting {
    std::string_view key;
    Scanner key_place;
    Scanner value;
};

/// Takes the line apart; throws if it is no setting.
Setting setting_of(const SourceLine& line);

/// Whether the line begins as a setting does.
bool is_setting(const SourceLine& line);

/// Calls `take` for each setting, catching what it throws. A key that comes twice is a fault.
void for_settings(const std::vector<SourceLine>& lines, Faults& faults,
                  const std::function<void(Setting& setting)>& take);

/// Throws that the key isn't one of `keys`.
[[noreturn]] void fail_key(const Setting& setting, std::string_view keys);

/// yes or no.
bool take_yes(Scanner& scanner);

}  // namespace orvanel
