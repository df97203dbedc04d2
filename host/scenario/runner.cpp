#include "host/scenario/runner.h"

#include "base/files.h"
#include "base/utf8.h"
#include "base/words.h"
#include "host/scenario/commands.h"
#include "host/scenario/ending.h"
#include "host/scenario/json_answers.h"
#include "host/scenario/report.h"
#include "host/scenario/sources.h"
#include "host/scenario/waits.h"
#include "host/scenario/world.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>
#include <vector>

namespace orvanel {

namespace {

constexpr std::string_view standard_input = "-";

constinit bool first_move_made = false;
constinit bool wants_input = false;
constinit bool endless = false;  // there is no scenario, and the session goes on all the same

/// A wrong line ends a scenario. It doesn't end a talk with a program, which reads that it was
/// wrong, but the files that the program has included.
void run_line(const std::string& line) {
    const std::size_t depth = sources.size();
    if (depth == 1) begin_answer(scenario_line);
    const int wrong = wrong_lines();
    const bool is_first = !sources.back().command_seen;
    if (run_scenario_line(line, is_first)) sources[depth - 1].command_seen = true;
    if (wrong_lines() == wrong) return;
    if (!answers_in_json() || output_is_gone()) return end_scenario();
    while (sources.size() > 1)
        leave_source();
}

void end_source() {
    if (sources.size() > 1)
        leave_source();
    else
        end_scenario();
}

/// Runs commands one after the other until one waits, the input has no more for now, or the end.
void run_commands() {
    std::string line;
    wants_input = false;
    while (!scenario_ended() && !waiting()) {
        if (run_next_step()) continue;
        if (sources.size() == 1) give_answer();
        Source& source = sources.back();
        if (take_line(source, line)) {
            run_line(line);
        } else if (source.ended) {
            end_source();
            // Files that include each other again and again take no time of the module's.
            if (is_to_end()) stop_scenario();
        } else if (source.input.size() > max_line_bytes) {
            ++scenario_line;
            begin_answer(scenario_line);
            report_fault(wrong_line,
                         "the line is longer than " + std::to_string(max_line_bytes) + " bytes");
            end_scenario();
        } else if (wait_for_scenario_input(source.fd)) {
            read_input(source);
        } else {
            wants_input = !scenario_ended();
            return;
        }
    }
}

/// Whether the next line, all of which has been read, says how the line is to be, or nothing.
bool next_line_leads() {
    const std::vector<char>& input = sources.front().input;
    std::string_view line(input.data(), input.size());
    if (scenario_line == 0) line = after_mark(line);
    line = trimmed(line.substr(0, line.find_first_of("\r\n")));
    if (line.starts_with(';')) return true;
    const std::string_view word = take_word(line);
    return word.empty() || word == "scenario" || word == "protocol" || word == "port";
}

}  // namespace

std::string open_scenario(const std::string& name) {
    endless = name.empty();
    if (endless) {
        sources.emplace_back(Source{"", -1, false, {}, 0, false, 0});  // nothing ever comes from it
        return {};
    }
    const bool is_file = name != standard_input;
    const int fd = is_file ? open(name.c_str(), O_RDONLY | O_CLOEXEC) : STDIN_FILENO;
    scenario_name = sources.emplace_back(Source{name, fd, false, {}, 0, false, 0}).name;
    scenario_line = 0;
    return fd < 0 ? errno_text() : "";
}

void close_scenario() {
    if (!sources.empty() && sources.front().fd > STDIN_FILENO) close(sources.front().fd);
    while (sources.size() > 1)
        leave_source();
    if (!sources.empty()) sources.front().fd = -1;
}

void run_leading_lines() {
    if (sources.empty()) return;
    Source& source = sources.front();
    while (!scenario_ended() && source.fd >= 0 && source.input.size() <= max_line_bytes) {
        const bool whole = std::ranges::find(source.input, '\n') != source.input.end();
        if (whole || (source.ended && !source.input.empty())) {
            std::string line;
            if (!next_line_leads() || !take_line(source, line)) return;
            run_line(line);
            give_answer();
        } else if (!source.ended && scenario_input_is_there(source.fd)) {
            read_input(source);
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

int scenario_input_fd() { return sources.back().fd; }

void scenario_input_ready() {
    read_input(sources.back());
    run_commands();
}

void stop_scenario() {
    if (scenario_ended()) return;
    if (!endless && sources.front().name != standard_input)
        report_fault(expectation_failed, "the scenario was stopped before its end");
    end_scenario();
}

}  // namespace orvanel
