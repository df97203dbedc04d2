#include "host/scenario/sources.h"

#include "base/files.h"
#include "base/utf8.h"
#include "host/scenario/ending.h"
#include "host/scenario/report.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace orvanel {

std::deque<Source> sources;

namespace {

constexpr std::size_t max_sources = 16;
constexpr std::size_t max_included_bytes = std::size_t{16} << 20;

}  // namespace

bool take_line(Source& source, std::string& line) {
    // `searched` is at most the size, and 0 for an empty input.
    // cppcheck-suppress containerOutOfBounds
    const auto end = std::find(source.input.begin() + source.searched, source.input.end(), '\n');
    source.searched = std::ssize(source.input);
    const bool found = end != source.input.end();
    if (!found && (!source.ended || source.input.empty())) return false;
    line.assign(source.input.begin(), end);
    source.input.erase(source.input.begin(), found ? end + 1 : end);
    source.searched = 0;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (++scenario_line == 1) line.erase(0, line.size() - after_mark(line).size());
    return true;
}

void read_input(Source& source) {
    std::array<char, 65536> part{};
    const ssize_t n = read(source.fd, part.data(), part.size());
    if (n > 0) {
        source.input.insert(source.input.end(), part.begin(), part.begin() + n);
    } else if (n == 0) {
        source.ended = true;
    } else if (errno != EINTR && errno != EAGAIN) {
        report_fault(wrong_line, "can't read on: " + errno_text());
        end_scenario();
    }
}

void include_scenario(const std::string& path) {
    if (sources.size() == max_sources)
        return report_fault(wrong_line, "files include each other " + std::to_string(max_sources) +
                                            " deep: does one include itself?");
    Bytes content;
    if (const std::string fault = read_file(path, max_included_bytes, content); !fault.empty())
        return report_fault(wrong_line, path + ": " + fault);
    Source source{path, -1, true, {content.begin(), content.end()}, 0, false, scenario_line};
    scenario_name = sources.emplace_back(std::move(source)).name;
    scenario_line = 0;
}

void leave_source() {
    scenario_line = sources.back().outer_line;
    sources.pop_back();
    scenario_name = sources.back().name;
}

}  // namespace orvanel
