#include "kit/map.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>

namespace orvanel {

namespace {

struct BytePlace {
    int file = -1;  // index into the map's files
    int line = 0, column = 0;
};

struct Mapper {
    SourceMap map;
    std::map<std::string, int> files;  // their indices
    std::vector<BytePlace> places;     // of each byte
};

int index_of(Mapper& mapper, const std::string& file) {
    const auto [found, is_new] =
        mapper.files.try_emplace(file, static_cast<int>(mapper.map.files.size()));
    if (is_new) mapper.map.files.push_back(file);
    return found->second;
}

BytePlace byte_place(Mapper& mapper, const Place& place) {
    return {index_of(mapper, place.file), place.line, place.column};
}

void put_place(Mapper& mapper, int at, std::size_t count, const BytePlace& place) {
    std::fill_n(mapper.places.begin() + at, count, place);
}

/// `size` bytes at `at`, as their lines have them.
void put_written(Mapper& mapper, int at, std::size_t size, const Written& written) {
    for (std::size_t i = 0; i < written.lines.size(); ++i) {
        const Written::Line& line = written.lines[i];
        const std::size_t end = i + 1 < written.lines.size() ? written.lines[i + 1].first : size;
        const int file = index_of(mapper, line.file);
        for (std::size_t byte = line.first; byte < end; ++byte)
            mapper.places[static_cast<std::size_t>(at) + byte] = {file, line.number,
                                                                  written.columns.list[byte]};
    }
}

void put_item(Mapper& mapper, const Kit& kit, std::size_t i, const std::vector<int>& offsets) {
    const Item& item = kit.items[i];
    const BytePlace heading = byte_place(mapper, item.place);
    mapper.map.items.push_back(
        {item.kind, item.number, heading.file, heading.line, heading.column, item.name});
    if (bytes_of(kit, item).empty()) return;
    put_place(mapper, entry_at(item.kind, item.number),
              static_cast<std::size_t>(table_of(item.kind).entry_size), heading);
    if (item.same >= 0) return;
    put_place(mapper, offsets[i], item.bytes.size(), heading);
    put_written(mapper, offsets[i], item.bytes.size(), item.written);
}

void put_allow(Mapper& mapper, const Allow& allow) {
    MappedAllow mapped{allow.finding, index_of(mapper, allow.place.file), allow.place.line, {}};
    for (const Allow::Lines& lines : allow.lines)
        mapped.lines.push_back({index_of(mapper, lines.file), lines.first, lines.last});
    mapper.map.allowed.push_back(std::move(mapped));
}

/// Whether the place lies so many columns after the start of the span.
bool goes_on(const SourceSpan& span, const BytePlace& place, int bytes) {
    return place.file == span.file && place.line == span.line &&
           place.column == span.column + span.step * bytes;
}

/// The span that begins at `at`, and where it ends.
SourceSpan span_at(const std::vector<BytePlace>& places, std::size_t at, std::size_t& end) {
    const BytePlace& first = places[at];
    SourceSpan span{static_cast<int>(at), first.file, first.line, first.column, 0};
    if (at + 1 < places.size() && first.file >= 0 && places[at + 1].file == first.file &&
        places[at + 1].line == first.line)
        span.step = std::clamp(places[at + 1].column - first.column, 0, 2);
    end = at + 1;
    while (end < places.size() && goes_on(span, places[end], static_cast<int>(end - at)))
        ++end;
    return span;
}

}  // namespace

SourceMap map_of(const Kit& kit, const LaidOut& laid_out) {
    Mapper mapper{};
    mapper.map.size = static_cast<int>(laid_out.image.size());
    mapper.map.sum = image_sum(laid_out.image);
    mapper.places.resize(laid_out.image.size());
    index_of(mapper, kit.file);
    for (std::size_t i = 0; i < kit.items.size(); ++i)
        put_item(mapper, kit, i, laid_out.offsets);
    for (const Patch& patch : kit.patches)
        put_written(mapper, patch.at, patch.bytes.size(), patch.written);
    for (const Allow& allow : kit.allowed)
        put_allow(mapper, allow);
    for (std::size_t at = 0, end = 0; at < mapper.places.size(); at = end)
        mapper.map.spans.push_back(span_at(mapper.places, at, end));
    return std::move(mapper.map);
}

}  // namespace orvanel
