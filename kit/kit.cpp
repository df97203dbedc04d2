#include "kit/kit.h"

#include "base/nearest.h"
#include "base/quoting.h"
#include "firmware/store/ground/eeprom.h"
#include "kit/commands.h"
#include "kit/resources.h"
#include "kit/sections.h"

#include <algorithm>
#include <array>

namespace orvanel {

namespace {

constexpr int default_block = 1024;
constexpr int max_block = 0xFFFF;
constexpr int max_stream = 1 << 24;
constexpr std::size_t max_allows = 1000;
constexpr std::array<std::string_view, 3> stream_names{"block", "blocks", "percent"};

/// A kit on its way.
struct KitReader {
    Kit kit;
    std::vector<const Section*> item_sections;  // one for each item of the kit
    const Progress* progress;
    Faults* faults;
};

template <typename Action> void guarded(Faults& faults, Action action) {
    try {
        action();
    } catch (const Fault& fault) {
        faults.push_back(fault);
    }
}

void read_image_section(const Section& section, KitReader& reader) {
    Kit& kit = reader.kit;
    for_settings(section.lines, *reader.faults, [&](Setting& setting) {
        if (setting.key == "memory") {
            const Scanner start = setting.value;
            const int size = take_number(setting.value, 0, 64);
            if (size != 32 && size != 64) fail(start, "expected 32 or 64");
            kit.memory = size == 64 ? eeprom_large : eeprom_small;
        } else if (setting.key == "length") {
            kit.length = take_number(setting.value, 0, max_image_length);
        } else if (setting.key == "crc") {
            kit.crc = take_number(setting.value, 0, 0xFFFF);
        } else {
            fail_key(setting, "memory, length or crc");
        }
    });
}

void read_stream_section(const Section& section, KitReader& reader) {
    StreamPlan& stream = reader.kit.stream;
    for_settings(section.lines, *reader.faults, [&](Setting& setting) {
        if (setting.key == "block")
            stream.block = take_number(setting.value, 16, max_block);
        else if (setting.key == "length")
            stream.length = take_number(setting.value, 0, max_stream);
        else if (setting.key == "restart")
            stream.restart = take_yes(setting.value);
        else
            fail_key(setting, "block, length or restart");
    });
}

void append(std::vector<SourceLine>& lines, const std::vector<SourceLine>& more) {
    lines.insert(lines.end(), more.begin(), more.end());
}

/// Makes the name known; throws if it is taken.
void add_name(KitReader& reader, const Place& place, std::string_view name, Named named) {
    const bool reserved =
        std::find(stream_names.begin(), stream_names.end(), name) != stream_names.end();
    if (reserved || !reader.kit.names.emplace(name, named).second)
        throw Fault(place, "the name " + in_quotes(name) + " is taken");
}

void read_constants(const Section& section, KitReader& reader) {
    for_settings(section.lines, *reader.faults, [&](Setting& setting) {
        const int value =
            take_sum(setting.value, reader.kit.names, Kind::number, setting.key, 0, 0xFFFF);
        add_name(reader, place_of(setting.key_place), setting.key, {Kind::number, value});
    });
}

const Item* find_item(const Kit& kit, Kind kind, int number) {
    const auto found = std::find_if(kit.items.begin(), kit.items.end(), [&](const Item& item) {
        return item.kind == kind && item.number == number;
    });
    return found == kit.items.end() ? nullptr : &*found;
}

/// Makes the items of the sections, in their order and still without bytes. Those that the source
/// leaves without a number get the lowest that are free.
void list_items(const std::vector<Section>& sections, KitReader& reader) {
    Kit& kit = reader.kit;
    for (const Section& section : sections) {
        if (section.topic != Topic::item) continue;
        const Item* taken =
            section.number < 0 ? nullptr : find_item(kit, section.kind, section.number);
        if (taken != nullptr) {
            reader.faults->emplace_back(section.place, title_of(*taken) + " stands in line " +
                                                           std::to_string(taken->place.line) +
                                                           " already");
            continue;
        }
        kit.items.push_back(
            {section.kind, section.number, section.name, section.place, -1, -1, {}, {}});
        reader.item_sections.push_back(&section);
    }
}

void number_items(KitReader& reader) {
    Kit& kit = reader.kit;
    for (Item& item : kit.items)
        guarded(*reader.faults, [&] {
            if (item.number < 0) {
                int number = table_of(item.kind).min;
                while (find_item(kit, item.kind, number) != nullptr)
                    ++number;
                if (number > table_of(item.kind).max)
                    throw Fault(item.place, "no number is free, the last " +
                                                std::string(kind_name(item.kind)) + " is " +
                                                std::to_string(table_of(item.kind).max));
                item.number = number;
            }
            if (!item.name.empty())
                add_name(reader, item.place, item.name, {item.kind, item.number});
        });
}

/// `normal macro 5`, or a name.
int take_item(Scanner& scanner, const Kit& kit) {
    peek(scanner);
    const Scanner start = scanner;
    Named wanted{Kind::number, -1};
    if (const auto named = kit.names.find(take_word(scanner)); named != kit.names.end())
        wanted = named->second;
    scanner = wanted.kind == Kind::number ? start : scanner;
    if (wanted.kind == Kind::number) {
        const std::string_view rest = std::string_view(start.line->text).substr(start.at);
        for (int i = 1; i <= static_cast<int>(Kind::menu); ++i)
            if (rest.starts_with(kind_name(Kind(i)))) wanted.kind = Kind(i);
        if (wanted.kind == Kind::number)
            fail(start, "expected a name, or a kind and a number: picture 3, touch macro 7" +
                            is_it(rest.substr(0, rest.find(' ')), all_of(kit.names)));
        scanner.at += kind_name(wanted.kind).size();
        wanted.number = take_number(scanner, table_of(wanted.kind).min, table_of(wanted.kind).max);
    }
    const Item* item = find_item(kit, wanted.kind, wanted.number);
    if (item == nullptr) fail(start, "there is no such item here");
    return static_cast<int>(item - kit.items.data());
}

/// Where the next bytes of a section come from.
void note_line(Written& written, const SourceLine& line, const Bytes& bytes) {
    written.lines.push_back({bytes.size(), line.file, line.number});
}

bool is_place_setting(const SourceLine& line) {
    if (!is_setting(line)) return false;
    const std::string_view key = setting_of(line).key;
    return key == "at" || key == "same";
}

void take_same(Setting& setting, Item& item, const Kit& kit) {
    const Scanner start = setting.value;
    item.same = take_item(setting.value, kit);
    const Item& other = kit.items[static_cast<std::size_t>(item.same)];
    if (&other == &item) fail(start, "that is this item itself");
    if (other.kind != item.kind && !(is_macro(other.kind) && is_macro(item.kind)))
        fail(start, title_of(other) + " can't serve as a " + std::string(kind_name(item.kind)));
}

/// Takes the settings that every item may have. The result is the section without them.
Section take_place_settings(const Section& section, Item& item, const Kit& kit, Faults& faults) {
    Section rest = section;
    const auto first =
        std::stable_partition(rest.lines.begin(), rest.lines.end(),
                              [](const SourceLine& line) { return !is_place_setting(line); });
    const std::vector<SourceLine> place_lines(first, rest.lines.end());
    rest.lines.erase(first, rest.lines.end());
    for_settings(place_lines, faults, [&](Setting& setting) {
        if (setting.key == "at")
            item.at = take_number(setting.value, 0, 0xFFFF);
        else
            take_same(setting, item, kit);
    });
    return rest;
}

/// Lines of a macro: commands, and no settings but those of its place.
Bytes macro_of_section(const Section& section, const Assembly& assembly, Written& written,
                       Faults& faults) {
    std::vector<SourceLine> settings;
    Bytes bytes;
    for (const SourceLine& line : section.lines) {
        if (is_setting(line)) {
            settings.push_back(line);
            continue;
        }
        note_line(written, line, bytes);
        guarded(faults, [&] { assemble_line(line, assembly, bytes, &written.columns); });
    }
    for_settings(settings, faults, [](Setting& setting) { fail_key(setting, "at or same"); });
    if (bytes.size() > max_macro_length)
        faults.emplace_back(section.place, "the macro takes more than " +
                                               std::to_string(max_macro_length) + " bytes");
    return bytes;
}

void read_item(std::size_t i, KitReader& reader) {
    Kit& kit = reader.kit;
    Item& item = kit.items[i];
    Faults faults;
    const Section section = take_place_settings(*reader.item_sections[i], item, kit, faults);
    const bool shared = item.same >= 0;
    if (item.kind == Kind::font) {
        item.bytes = font_of_section(section, shared, kit.names, kit.inputs, faults);
    } else if (item.kind == Kind::picture) {
        item.bytes = picture_of_section(section, shared, kit.names, kit.inputs, faults);
    } else {
        const Assembly assembly{&kit.names, [&kit](int number) {
                                    const Item* picture = find_item(kit, Kind::picture, number);
                                    return picture == nullptr ? Bytes() : bytes_of(kit, *picture);
                                }};
        item.bytes = macro_of_section(section, assembly, item.written, faults);
        if (shared && !item.bytes.empty())
            faults.emplace_back(item.place, "the macro has same, and commands beside it");
    }
    reader.faults->insert(reader.faults->end(), faults.begin(), faults.end());
}

/// Fonts and pictures first, since macros may hold a picture.
void read_items(KitReader& reader) {
    for (const bool macros : {false, true})
        for (std::size_t i = 0; i < reader.kit.items.size(); ++i) {
            if (is_macro(reader.kit.items[i].kind) != macros) continue;
            (*reader.progress)(title_of(reader.kit.items[i]));
            read_item(i, reader);
        }
    for (const Item& item : reader.kit.items)
        if (item.same >= 0 && reader.kit.items[static_cast<std::size_t>(item.same)].same >= 0)
            reader.faults->emplace_back(item.place,
                                        "shares the bytes of an item that has none of its own");
}

void read_patch(const Section& section, KitReader& reader) {
    Patch patch{section.place, section.number, {}, {}};
    for (const SourceLine& line : section.lines)
        guarded(*reader.faults, [&] {
            Scanner scanner{&line, 0};
            note_line(patch.written, line, patch.bytes);
            patch.written.columns.at = 0, patch.written.columns.column = 1;
            const Bytes bytes = take_bytes(scanner, &patch.written.columns);
            patch.bytes.insert(patch.bytes.end(), bytes.begin(), bytes.end());
        });
    reader.kit.patches.push_back(std::move(patch));
}

void read_plain_section(const Section& section, KitReader& reader) {
    StreamPlan& stream = reader.kit.stream;
    switch (section.topic) {
    case Topic::image:
        return read_image_section(section, reader);
    case Topic::stream:
        return read_stream_section(section, reader);
    case Topic::stream_before:
        return append(stream.before, section.lines);
    case Topic::stream_after_block:
        return append(stream.after_block, section.lines);
    case Topic::stream_after:
        return append(stream.after, section.lines);
    case Topic::constants:
        return read_constants(section, reader);
    case Topic::bytes:
        return read_patch(section, reader);
    case Topic::item:
        return;
    }
}

bool is_blank(const SourceLine& line) {
    Scanner scanner{&line, 0};
    return peek(scanner) == 0;
}

bool is_heading(const SourceLine& line) {
    Scanner scanner{&line, 0};
    return peek(scanner) == '[';
}

void add_line(Allow& allow, const SourceLine& line) {
    const bool goes_on = !allow.lines.empty() && allow.lines.back().file == line.file &&
                         allow.lines.back().last + 1 == line.number;
    if (goes_on)
        ++allow.lines.back().last;
    else
        allow.lines.push_back({line.file, line.number, line.number});
}

Allow allow_at(const SourceLine& line, std::string_view name) {
    const auto column = static_cast<int>(line.text.find(';')) + 1;
    return {std::string(name), {line.file, line.number, column}, {}};
}

/// The comments that allow something, each with the line that follows or, before a heading, with
/// all the lines below that.
std::vector<Allow> allows_in(const std::vector<SourceLine>& lines, Faults& faults) {
    std::vector<Allow> allows;
    std::size_t item = 0, item_end = 0;  // those before the last heading
    std::size_t next = 0;                // from here on those before the next line
    for (const SourceLine& line : lines) {
        if (const std::string_view name = allowed_by(line); !name.empty()) {
            if (allows.size() == max_allows) {
                faults.push_back(
                    Fault({line.file, line.number, 0},
                          "more than " + std::to_string(max_allows) + " comments allow something"));
                return allows;
            }
            allows.push_back(allow_at(line, name));
            continue;
        }
        if (is_blank(line)) continue;
        if (is_heading(line)) {
            item = next;
            item_end = next = allows.size();
        }
        for (std::size_t i = item; i < item_end; ++i)
            add_line(allows[i], line);
        for (; next < allows.size(); ++next)
            add_line(allows[next], line);
    }
    return allows;
}

}  // namespace

Kit read_kit(const std::string& file, const std::vector<SourceLine>& lines,
             const Progress& progress, Faults& faults) {
    KitReader reader{
        {file, {file}, eeprom_small, -1, -1, {}, {}, {default_block, -1, true, {}, {}, {}}, {}, {}},
        {},
        &progress,
        &faults};
    for (const SourceLine& line : lines)
        if (line.file != reader.kit.inputs.back()) reader.kit.inputs.push_back(line.file);
    reader.kit.allowed = allows_in(lines, faults);
    const std::vector<Section> sections = sections_of(lines, faults);
    for (const Section& section : sections)
        read_plain_section(section, reader);
    list_items(sections, reader);
    number_items(reader);
    read_items(reader);
    return std::move(reader.kit);
}

std::string title_of(const Item& item) {
    std::string title(kind_name(item.kind));
    if (item.number >= 0) title += " " + std::to_string(item.number);
    return item.name.empty() ? title : title + " (" + item.name + ")";
}

const Bytes& bytes_of(const Kit& kit, const Item& item) {
    return item.same < 0 ? item.bytes : kit.items[static_cast<std::size_t>(item.same)].bytes;
}

}  // namespace orvanel
