#include "host/scenario/report.h"

#include "base/standard_output.h"
#include "base/visible.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <system_error>
#include <utility>

namespace orvanel {

constinit std::string_view scenario_name{};
constinit int scenario_line = 0;
constinit int fault_record_fd = -1;
constinit const OutputSink* output_sink = nullptr;

namespace {

constexpr std::string_view end_record = "end\n";
constexpr std::string_view withheld_record = "withheld\n";
constexpr std::array<int, 4> by_weight{all_well, expectation_failed, gave_up, wrong_line};

constinit int status_so_far = all_well;
constinit int wrong_faults = 0;
constinit bool output_failed = false;
constinit std::vector<std::string> fault_files{};

auto weight_of(int status) { return std::find(by_weight.begin(), by_weight.end(), status); }

void write_record(std::string_view record) {
    while (fault_record_fd >= 0 && !record.empty()) {
        const ssize_t n = write(fault_record_fd, record.data(), record.size());
        if (n < 0 && errno != EINTR) return;  // the reader is gone; there is nobody to tell
        if (n > 0) record.remove_prefix(static_cast<std::size_t>(n));
    }
}

/// Takes a number and the one character behind it.
bool take_field(std::string_view& rest, char behind, std::int64_t& value) {
    const auto [end, fault] = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    const auto n = static_cast<std::size_t>(end - rest.data());
    if (fault != std::errc{} || n >= rest.size() || rest[n] != behind) return false;
    rest.remove_prefix(n + 1);
    return true;
}

}  // namespace

void put_line(std::string_view line) {
    write_stdout(line);
    write_stdout("\n");
    if (flush_stdout() || output_failed) return;
    output_failed = true;
    report_fault(wrong_line, stdout_fault());
}

void print_line(std::string_view line) {
    if (output_sink != nullptr)
        output_sink->printed(line);
    else
        put_line(line);
}

void print_event(std::string_view line) {
    if (output_sink != nullptr)
        output_sink->event(line);
    else
        put_line(line);
}

void note_fault_file(const std::string& path) { fault_files.push_back(path); }

void report_fault(int status, std::string_view text) {
    status_so_far = worse_status(status_so_far, status);
    if (status == wrong_line) ++wrong_faults;
    const Fault fault{status, scenario_line, std::string(text)};
    const std::vector<std::string> files = std::exchange(fault_files, {});
    if (output_sink != nullptr && !output_failed) return output_sink->fault(fault, files);
    tell_user(fault_message(scenario_name, fault));
    write_record(std::to_string(status) + " " + std::to_string(fault.line) + " " +
                 std::to_string(text.size()) + "\n" + fault.text);
}

void count_fault(int status) { status_so_far = worse_status(status_so_far, status); }

int wrong_lines() { return wrong_faults; }

bool output_is_gone() { return output_failed; }

int fault_status() { return status_so_far; }

int worse_status(int a, int b) { return weight_of(a) < weight_of(b) ? b : a; }

std::string fault_message(std::string_view name, const Fault& fault) {
    if (fault.line == brings_its_place) return visible_lines(fault.text);
    std::string message = visible(name);
    if (fault.line > 0) message.append(":").append(std::to_string(fault.line));
    return message.append(": error: ").append(visible_lines(fault.text));
}

void write_withheld_record() { write_record(withheld_record); }

void write_end_record() { write_record(end_record); }

FaultRecords parse_fault_records(std::string_view records) {
    FaultRecords read{};
    for (;;) {
        std::int64_t status = 0;
        std::int64_t line = 0;
        std::int64_t size = 0;
        if (records.starts_with(withheld_record)) {
            read.results_withheld = true;
            records.remove_prefix(withheld_record.size());
        } else if (take_field(records, ' ', status) && take_field(records, ' ', line) &&
                   take_field(records, '\n', size) && size >= 0) {
            read.faults.push_back({static_cast<int>(status), static_cast<int>(line),
                                   std::string(records.substr(0, static_cast<std::size_t>(size)))});
            records.remove_prefix(std::min(static_cast<std::size_t>(size), records.size()));
        } else {
            read.complete = records == end_record;
            return read;
        }
    }
}

}  // namespace orvanel
