#include "host/scenario/json_answers.h"

#include "base/json.h"
#include "base/visible.h"
#include "host/scenario/report.h"
#include "host/scenario/world.h"
#include "host/trace/trace_writer.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvanel {

namespace {

constexpr std::string_view greeting =
    R"({"protocol":1,"program":"orvanel42-headless","version":")" ORVANEL_VERSION "\"}";

constinit bool started = false;
constinit int answered_line = 0;  // the line that runs, 0 for none

// What has been said since the answer before, each as a JSON value.
constinit std::vector<std::string> printed{};
constinit std::vector<std::string> events{};
constinit std::vector<std::string> faults{};

void take_printed(std::string_view line) { printed.push_back(json_text(line)); }

void take_event(std::string_view line) { events.push_back(json_text(line)); }

std::string_view kind_of(int status) {
    switch (status) {
    case expectation_failed:
        return "expectation";
    case gave_up:
        return "settle";
    default:
        return "line";
    }
}

std::string array_of(const std::vector<std::string>& values) {
    std::string text = "[";
    for (const std::string& value : values)
        text += (text.size() > 1 ? "," : "") + value;
    return text + ']';
}

std::string fault_object(std::string_view kind, std::string_view message, int line,
                         const std::vector<std::string>& files) {
    std::vector<std::string> paths;
    for (const std::string& file : files)
        paths.push_back(json_text(file));
    return "{\"kind\":" + json_text(kind) + ",\"message\":" + json_text(visible_lines(message)) +
           ",\"file\":" + json_text(scenario_name) + ",\"line\":" + std::to_string(line) +
           ",\"files\":" + array_of(paths) + '}';
}

void take_fault(const Fault& fault, const std::vector<std::string>& files) {
    faults.push_back(fault_object(kind_of(fault.status), fault.text, fault.line, files));
}

std::string milliseconds() {
    const std::int64_t us = clock_us();
    std::string places = std::to_string(us % 1000);
    places.insert(0, 3 - places.size(), '0');
    return std::to_string(us / 1000) + '.' + places;
}

void put_answer(const std::string& what) {
    // In real time other threads still find some: these come in the end.
    std::size_t unkept = 0;
    if (line_is_simulated()) answer_mistakes(take_mistakes(unkept), unkept);
    const std::string ok = faults.empty() ? "true" : "false";
    put_line("{" + what + ",\"ok\":" + ok + ",\"ms\":" + milliseconds() +
             ",\"events\":" + array_of(std::exchange(events, {})) +
             ",\"printed\":" + array_of(std::exchange(printed, {})) +
             ",\"faults\":" + array_of(std::exchange(faults, {})) + "}");
}

constexpr OutputSink sink{take_printed, take_event, take_fault};

}  // namespace

void start_answers() {
    started = true;
    output_sink = &sink;
    put_line(greeting);
}

bool answers_in_json() { return started; }

void begin_answer(int line) {
    if (started) answered_line = line;
}

void give_answer() {
    if (answered_line == 0) return;
    put_answer("\"line\":" + std::to_string(std::exchange(answered_line, 0)));
}

void answer_mistakes(std::span<const Mistake> mistakes, std::size_t unkept) {
    const auto add = [](std::string_view kind, const std::string& message, int line) {
        count_fault(expectation_failed);
        faults.push_back(fault_object(kind, message, line, {}));
    };
    for (const Mistake& mistake : mistakes)
        add(is_remark(mistake.finding) ? "remark" : "hint",
            words_of(mistake, std::string(scenario_name)), mistake.scenario_line);
    if (unkept > 0) add("remark", "and " + std::to_string(unkept) + " more", 0);
}

void end_answers(int status) {
    if (!started) return;
    give_answer();
    put_answer("\"end\":true,\"status\":" + std::to_string(status));
}

}  // namespace orvanel
