#include "host/trace/places.h"

#include <atomic>
#include <cstdio>
#include <memory>

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

}  // namespace

void note_feed(std::uint32_t number, const std::string& file, bool has_lines, int scenario_line) {
    std::unique_ptr<const Fed> earlier(newest_fed.load());
    newest_fed.store(new Fed{number, file, has_lines, scenario_line, std::move(earlier)});
}

void set_acting_line(int scenario_line) { acting_line = scenario_line; }

int acting_scenario_line() { return acting_line; }

Place place_of(const ByteSource& source) {
    if (source.origin == ByteOrigin::companion && source.number != 0)
        return {{}, 0, 0, static_cast<int>(source.number)};
    const Fed* fed = source.origin == ByteOrigin::feed ? fed_by(source.number) : nullptr;
    if (fed == nullptr) return {{}, 0, 0, acting_line};
    if (!fed->has_lines || !read_on(*fed, source.offset))
        return {fed->file, 0, 0, fed->scenario_line};
    return {fed->file, reading.line, reading.column, fed->scenario_line};
}

std::string words_of(const Place& place) {
    if (place.line == 0) return place.file;
    return place.file + ':' + std::to_string(place.line) + ':' + std::to_string(place.column);
}

void forget_places() {
    reading = {};
    const std::unique_ptr<const Fed> all(newest_fed.exchange(nullptr));
    acting_line = 0;
}

}  // namespace orvanel
