#include "host/trace/places.h"

#include "base/bytes.h"
#include "firmware/store/ground/eeprom.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <memory>
#include <utility>

namespace orvanel {

namespace {

/// A feed that has a name. The host's main thread puts it in front of the others and none changes
/// after that, so that the firmware's thread may look through them at any time.
struct Fed {
    std::uint32_t number;
    std::string file;
    bool has_lines;
    int scenario_line;
    std::unique_ptr<const Fed> earlier;
};

std::atomic<const Fed*> newest_fed{nullptr};

/// A kit that has been built, in a list as that of the feeds.
struct BuiltKit {
    SourceMap map;
    Bytes image;
    std::unique_ptr<const BuiltKit> earlier;
};

std::atomic<const BuiltKit*> newest_kit{nullptr};

std::atomic<int> acting_line{0};

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// How far the file of the last question was read. Of the firmware's thread.
struct Reading {
    const Fed* fed;
    std::unique_ptr<std::FILE, CloseFile> file;
    std::uint32_t offset;  // of the next byte
    int line, column;      // its place
};
Reading reading{};

/// Reads on to the byte at `offset`. False if the file has no such byte any more.
bool read_on(const Fed& fed, std::uint32_t offset) {
    if (reading.fed != &fed || offset < reading.offset)
        reading = {&fed, decltype(reading.file)(std::fopen(fed.file.c_str(), "rbe")), 0, 1, 1};
    for (; reading.file != nullptr && reading.offset < offset; ++reading.offset) {
        const int byte = std::getc(reading.file.get());
        if (byte == EOF) return false;
        ++reading.column;
        if (byte == '\n') {
            ++reading.line;
            reading.column = 1;
        }
    }
    return reading.file != nullptr;
}

const Fed* fed_by(std::uint32_t number) {
    const Fed* fed = newest_fed.load(std::memory_order_acquire);
    while (fed != nullptr && fed->number != number)
        fed = fed->earlier.get();
    return fed;
}

struct MacroRecord {
    int first, length;
    bool operator==(const MacroRecord&) const = default;
};

/// Of the image in the module, and of one that was built; a record outside it is empty.
MacroRecord record_at(std::span<const std::uint8_t> image, int at) {
    if (at + macro_record_size > std::ssize(image)) return {};
    const auto pair = [&](int i) {
        const auto index = static_cast<std::size_t>(at + i);
        return int{le16(image[index], image[index + 1])};
    };
    const MacroRecord record{pair(0), pair(2)};
    const bool is_inside = record.first + record.length <= std::ssize(image);
    return is_macro_length(record.length) && is_inside ? record : MacroRecord{};
}

/// Whether the macro lies in the module as the kit has it.
bool is_as_built(const BuiltKit& kit, const MacroRecord& record, int record_at_offset) {
    if (record_at(kit.image, record_at_offset) != record) return false;
    const auto part = [&record](std::span<const std::uint8_t> image) {
        return image.subspan(static_cast<std::size_t>(record.first),
                             static_cast<std::size_t>(record.length));
    };
    return std::ranges::equal(part(kit.image), part(eeprom_bytes()));
}

SourcePlace place_in_kit(const ByteSource& source) {
    const int at = source.macro_table + macro_record_size * static_cast<int>(source.number);
    const MacroRecord record = record_at(eeprom_bytes(), at);
    const int offset = static_cast<int>(source.offset);
    if (offset < record.first || offset >= record.first + record.length) return {};
    const BuiltKit* kit = newest_kit.load(std::memory_order_acquire);
    while (kit != nullptr && !is_as_built(*kit, record, at))
        kit = kit->earlier.get();
    const SourceSpan* span = kit == nullptr ? nullptr : find_span(kit->map, offset);
    if (span == nullptr) return {};
    return {kit->map.files[static_cast<std::size_t>(span->file)], span->line,
            span->column + span->step * (offset - span->offset)};
}

}  // namespace

void note_feed(std::uint32_t number, const std::string& file, bool has_lines, int scenario_line) {
    if (!tracing()) return;
    std::unique_ptr<const Fed> earlier(newest_fed.load());
    newest_fed.store(new Fed{number, file, has_lines, scenario_line, std::move(earlier)});
}

void note_kit(SourceMap map, std::span<const std::uint8_t> image) {
    std::unique_ptr<const BuiltKit> earlier(newest_kit.load());
    if (!tracing()) earlier.reset();  // nobody else looks
    newest_kit.store(
        new BuiltKit{std::move(map), {image.begin(), image.end()}, std::move(earlier)});
}

bool kit_allows(std::string_view name, const SourcePlace& place) {
    const BuiltKit* kit = place.line == 0 ? nullptr : newest_kit.load(std::memory_order_acquire);
    while (kit != nullptr && find_allow(kit->map, name, place.file, place.line) < 0)
        kit = kit->earlier.get();
    return kit != nullptr;
}

std::string_view kit_name_of(Kind kind, int number) {
    const BuiltKit* kit = newest_kit.load(std::memory_order_acquire);
    const MappedItem* item = kit == nullptr ? nullptr : find_item(kit->map, kind, number);
    return item == nullptr ? std::string_view() : item->name;
}

void set_acting_line(int scenario_line) { acting_line = scenario_line; }

int acting_scenario_line() { return acting_line; }

SourcePlace place_of(const ByteSource& source) {
    if (source.origin == ByteOrigin::companion && source.number != 0)
        return {{}, 0, 0, static_cast<int>(source.number)};
    if (source.origin == ByteOrigin::macro) {
        SourcePlace place = place_in_kit(source);
        place.scenario_line = acting_line;
        return place;
    }
    const Fed* fed = source.origin == ByteOrigin::feed ? fed_by(source.number) : nullptr;
    if (fed == nullptr) return {{}, 0, 0, acting_line};
    if (!fed->has_lines || !read_on(*fed, source.offset))
        return {fed->file, 0, 0, fed->scenario_line};
    return {fed->file, reading.line, reading.column, fed->scenario_line};
}

std::string words_of(const SourcePlace& place) {
    if (place.line == 0) return place.file;
    return place.file + ':' + std::to_string(place.line) + ':' + std::to_string(place.column);
}

void forget_places() {
    reading = {};
    const std::unique_ptr<const Fed> feeds(newest_fed.exchange(nullptr));
    const std::unique_ptr<const BuiltKit> kits(newest_kit.exchange(nullptr));
    acting_line = 0;
}

}  // namespace orvanel
