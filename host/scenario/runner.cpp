#include "host/scenario/runner.h"

#include "base/files.h"
#include "base/words.h"
#include "host/scenario/commands.h"
#include "host/scenario/ending.h"
#include "host/scenario/report.h"
#include "host/scenario/waits.h"
#include "host/scenario/world.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <vector>

namespace orvanel {

namespace {

constexpr std::size_t max_line_bytes = std::size_t{1} << 20;  // bytes
constexpr std::string_view standard_input = "-";

constinit int input_fd = -1;
constinit bool input_ended = false;     // nothing more comes from input_fd
constinit std::vector<char> input{};    // read but not yet run
constinit std::ptrdiff_t searched = 0;  // of it, known to hold no end of line

constinit bool first_move_made = false;
constinit bool command_seen = false;
constinit bool wants_input = false;
constinit bool endless = false;  // there is no scenario, and the session goes on all the same

/// Cuts the next line off `input`, with its end. False if it isn't all there yet.
bool take_line(std::string& line) {
    // `searched` is at most the size, and 0 for an empty input.
    // cppcheck-suppress containerOutOfBounds
    const auto end = std::find(input.begin() + searched, input.end(), '\n');
    searched = std::ssize(input);
    const bool found = end != input.end();
    if (!found && (!input_ended || input.empty())) return false;
    line.assign(input.begin(), end);
    input.erase(input.begin(), found ? end + 1 : end);
    searched = 0;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    ++scenario_line;
    return true;
}

/// One read, which waits if nothing is there.
void read_input() {
    std::array<char, 65536> part{};
    const ssize_t n = read(input_fd, part.data(), part.size());
    if (n > 0) {
        input.insert(input.end(), part.begin(), part.begin() + n);
    } else if (n == 0) {
        input_ended = true;
    } else if (errno != EINTR && errno != EAGAIN) {
        report_fault(wrong_line, "can't read on: " + errno_text());
        end_scenario();
    }
}

void run_line(const std::string& line) {
    if (run_scenario_line(line, !command_seen)) command_seen = true;
    if (fault_status() == wrong_line) end_scenario();
}

/// Runs commands one after the other until one waits, the input has no more for now, or the end.
void run_commands() {
    std::string line;
    wants_input = false;
    while (!scenario_ended() && !waiting()) {
        if (run_next_step()) continue;
        if (take_line(line)) {
            run_line(line);
        } else if (input_ended) {
            end_scenario();
        } else if (input.size() > max_line_bytes) {
            ++scenario_line;
            report_fault(wrong_line,
                         "the line is longer than " + std::to_string(max_line_bytes) + " bytes");
            end_scenario();
        } else if (wait_for_scenario_input(input_fd)) {
            read_input();
        } else {
            wants_input = !scenario_ended();
            return;
        }
    }
}

/// Whether the next line, all of which has been read, says how the line is to be, or nothing.
bool next_line_leads() {
    std::string_view line(input.data(), input.size());
    line = trimmed(line.substr(0, line.find_first_of("\r\n")));
    if (line.starts_with(';')) return true;
    const std::string_view word = take_word(line);
    return word.empty() || word == "scenario" || word == "protocol" || word == "port";
}

}  // namespace

std::string open_scenario(const std::string& name) {
    endless = name.empty();
    if (endless) return {};
    scenario_name = name;
    scenario_line = 0;
    if (name == standard_input) {
        input_fd = STDIN_FILENO;
        return {};
    }
    input_fd = open(name.c_str(), O_RDONLY | O_CLOEXEC);
    return input_fd < 0 ? errno_text() : "";
}

void close_scenario() {
    if (input_fd > STDIN_FILENO) close(input_fd);
    input_fd = -1;
}

void run_leading_lines() {
    while (!scenario_ended() && input_fd >= 0 && input.size() <= max_line_bytes) {
        const bool whole = std::find(input.begin(), input.end(), '\n') != input.end();
        if (whole || (input_ended && !input.empty())) {
            std::string line;
            if (!next_line_leads() || !take_line(line)) return;
            run_line(line);
        } else if (!input_ended && scenario_input_is_there(input_fd)) {
            read_input();
        } else {
            return;
        }
    }
}

void scenario_move_ended() {
    if (!first_move_made) {
        first_move_made = true;
        run_commands();
    }
    // What runs behind a wait may begin another one, which then is tested in the same place.
    while (!scenario_ended() && waiting_for_event()) {
        test_wait();
        if (waiting()) return;
        run_commands();
    }
}

std::int64_t scenario_due_us() { return wait_end_us(); }

void scenario_due() {
    end_wait();
    run_commands();
}

bool scenario_wants_input() { return wants_input; }

int scenario_input_fd() { return input_fd; }

void scenario_input_ready() {
    read_input();
    run_commands();
}

void stop_scenario() {
    if (scenario_ended()) return;
    if (!endless && scenario_name != standard_input)
        report_fault(expectation_failed, "the scenario was stopped before its end");
    end_scenario();
}

}  // namespace orvanel
