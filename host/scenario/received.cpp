#include "host/scenario/received.h"

#include "base/hex.h"
#include "host/scenario/report.h"
#include "host/scenario/waits.h"
#include "link/ground/port.h"

#include <algorithm>
#include <string>
#include <utility>

namespace orvanel {

namespace {

constexpr std::size_t max_shown = 32;  // bytes in a report

constinit std::uint64_t found_up_to = 0;  // as line_bytes_in counts

/// What has come in after the last find, as far as it is kept.
std::vector<std::uint8_t> new_bytes() {
    const std::uint64_t count = line_bytes_in.load();
    if (count - found_up_to > line_bytes_seen.size()) found_up_to = count - line_bytes_seen.size();
    std::vector<std::uint8_t> bytes;
    for (std::uint64_t at = found_up_to; at < count; ++at)
        bytes.push_back(line_bytes_seen[at % line_bytes_seen.size()].load());
    return bytes;
}

bool find_received(const std::vector<std::uint8_t>& expected) {
    const std::vector<std::uint8_t> bytes = new_bytes();
    const auto found = std::search(bytes.begin(), bytes.end(), expected.begin(), expected.end());
    if (found == bytes.end() && !expected.empty()) return false;
    found_up_to += static_cast<std::uint64_t>(found - bytes.begin()) + expected.size();
    return true;
}

void report_missing(const std::vector<std::uint8_t>& expected, const std::string& within) {
    const std::vector<std::uint8_t> bytes = new_bytes();
    const std::size_t cut = bytes.size() > max_shown ? bytes.size() - max_shown : 0;
    report_fault(expectation_failed,
                 within + " never" + hex_of(expected) + " on the line; " +
                     (bytes.empty()
                          ? "nothing has come in"
                          : "what has come in" + std::string(cut > 0 ? " ends in" : " is") +
                                hex_of(std::span(bytes).subspan(cut))));
}

}  // namespace

void wait_for_received(std::vector<std::uint8_t> expected, std::int64_t ms) {
    wait_for_condition([expected] { return find_received(expected); },
                       [expected](const std::string& within) { report_missing(expected, within); },
                       ms);
}

}  // namespace orvanel
