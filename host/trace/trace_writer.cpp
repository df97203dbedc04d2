#include "host/trace/trace_writer.h"

#include "base/files.h"
#include "base/hex.h"
#include "base/quoting.h"
#include "firmware/core/ground/trace.h"
#include "host/trace/findings.h"
#include "host/trace/hints.h"
#include "host/trace/lines.h"
#include "host/trace/places.h"
#include "host/trace/remarks.h"
#include "host/trace/steps.h"
#include "host/trace/wire_lines.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

namespace orvanel {

namespace {

constexpr std::size_t max_mistakes = 1000;

/// Mistakes in the order in which they were first made.
struct Mistakes {
    std::vector<Mistake> list;
    std::map<std::string, std::size_t> known;  // where in the list
    std::size_t unkept;                        // beyond max_mistakes
};

struct Trace {
    TraceOptions options;
    std::int64_t (*clock_us)();
    std::FILE* file;
    std::atomic<int> write_fault;  // errno of the first line that couldn't be written

    // Of the firmware's thread.
    StepReader reader;
    std::vector<std::uint8_t> answer;
    Mistakes mistakes;

    Mistakes mistakes_of_link;  // of link_thread

    // Of the host's main thread.
    Mistakes mistakes_of_host;
    std::map<int, std::map<std::string, bool>> allowed;  // by line of the scenario and name: used
};

std::unique_ptr<Trace> running;

/// Milliseconds with three places.
std::string time_now() {
    const std::int64_t us = running->clock_us();
    std::string places = std::to_string(us % 1000);
    places.insert(0, 3 - places.size(), '0');
    return std::to_string(us / 1000) + "." + places;
}

void write_line(const std::string& line) {
    if (running->file == nullptr || running->write_fault != 0) return;
    if (std::fputs((line + '\n').c_str(), running->file) < 0) running->write_fault = errno;
}

bool writes_json() { return running->options.form == TraceForm::json; }

void write_object(std::initializer_list<std::pair<std::string_view, std::string>> members) {
    write_line(json_object(time_now(), members));
}

bool counts(const Finding& finding) {
    return running->options.strictness == Strictness::hints ||
           (running->options.strictness == Strictness::remarks && is_remark(finding));
}

void keep_mistake(Mistakes& mistakes, const Finding& finding, const SourcePlace& place,
                  const std::string& where) {
    if (!counts(finding) || kit_allows(type_of(finding.kind).name, place)) return;
    const std::string where_from = words_of(place);
    const std::string key = where_from + '\n' + std::to_string(place.scenario_line) + '\n' + where +
                            '\n' + words_of(finding);
    const auto [known, is_new] = mistakes.known.try_emplace(key, mistakes.list.size());
    if (!is_new) {
        ++mistakes.list[known->second].count;
    } else if (mistakes.list.size() < max_mistakes) {
        mistakes.list.push_back({where_from, place.scenario_line, finding, where, 1});
    } else {
        mistakes.known.erase(known);
        ++mistakes.unkept;
    }
}

bool is_allowed(const Mistake& mistake) {
    const auto names = running->allowed.find(mistake.scenario_line);
    if (names == running->allowed.end()) return false;
    const auto name = names->second.find(std::string(type_of(mistake.finding.kind).name));
    if (name == names->second.end()) return false;
    return name->second = true;
}

/// Each `allow` that has let nothing pass.
void add_unused_allows(std::vector<Mistake>& mistakes) {
    for (const auto& [line, names] : running->allowed)
        for (const auto& [name, used] : names) {
            const Finding finding{FindingKind::nothing_allowed,
                                  "nothing is found with this line that 'allow " + name +
                                      "' lets pass: remove it"};
            if (!used && counts(finding)) mistakes.push_back({"", line, finding, "", 1});
        }
}

void flush_answer() {
    if (!running->options.layers.answer) running->answer.clear();
    if (running->answer.empty()) return;
    const std::string text = hex_of(running->answer, " ");
    if (writes_json())
        write_object({{"answer", '"' + hex_of(running->answer, "") + '"'}});
    else
        write_line(time_now() + " answer " + text);
    running->answer.clear();
}

/// What a mistake in a step is one of.
std::string title_of(const Step& step) {
    std::string title = command_words(step);
    if (step.source.origin == ByteOrigin::macro && step.count > 0)
        title = name_of(step.source) + ", " + title;
    return title;
}

void take_step(const Step& step) {
    const SourcePlace place = place_of(step.source);
    if (running->options.layers.command)
        write_line(writes_json() ? json_line(time_now(), step, place)
                                 : text_line(time_now(), step, place));
    for (const Finding& finding : told_together(step.findings)) {
        const bool unseen = finding.kind == FindingKind::text_unseen;
        keep_mistake(running->mistakes, finding, unseen ? place_of(step.lost) : place,
                     title_of(step));
    }
}

/// An answer comes after the command that gave it.
void end_step_and_answer() {
    end_step(running->reader);
    flush_answer();
}

/// What belongs to no command.
void write_finding(Mistakes& mistakes, const Finding& finding, int scenario_line) {
    if (writes_json())
        write_object({{"scenario_line", scenario_line == 0 ? "" : std::to_string(scenario_line)},
                      {"remarks", json_findings({finding}, Degree::remark)},
                      {"hints", json_findings({finding}, Degree::hint)}});
    else
        write_line(time_now() + " - | " + verdict({finding}));
    keep_mistake(mistakes, finding, {{}, 0, 0, scenario_line}, "");
}

void write_touch(const TraceEvent& event, const char* kind) {
    const bool at = event.kind != TraceKind::release;
    if (writes_json())
        write_object({{"touch", json_quoted(kind)},
                      {"x", at ? std::to_string(event.from) : ""},
                      {"y", at ? std::to_string(event.to) : ""},
                      {"area", json_quoted(event.role)}});
    else
        write_line(time_now() + ' ' + kind +
                   (at ? ' ' + std::to_string(event.from) + ' ' + std::to_string(event.to) : "") +
                   " on " + event.role);
}

void take_touch(const TraceEvent& event, const char* kind) {
    if (running->reader.step.is_text || !running->reader.open) end_step_and_answer();
    if (running->options.layers.touch) write_touch(event, kind);
    if (event.kind == TraceKind::press)
        for (const Finding& finding : findings_on_press(event.from, event.to))
            write_finding(running->mistakes, finding, acting_scenario_line());
}

void write_reset(int kind) {
    if (writes_json())
        write_object({{"reset", std::to_string(kind)}});
    else
        write_line(time_now() + " reset " + std::to_string(kind));
}

void write_wire(const WireEvent& event, const std::vector<Finding>& findings) {
    const bool out = event.kind == WireKind::sent;
    if (writes_json())
        return write_object({{"wire", out ? "\"out\"" : "\"in\""},
                             {"bytes", '"' + hex_of(event.bytes, "") + '"'},
                             {"what", json_quoted(wire_words(event))},
                             {"remarks", json_findings(findings, Degree::remark)},
                             {"hints", json_findings(findings, Degree::hint)}});
    const std::string bytes = event.bytes.empty() ? "" : ' ' + hex_of(event.bytes, " ");
    write_line(time_now() + (out ? " wire out" : " wire in") + bytes + " | " + wire_words(event) +
               " | " + verdict(findings));
}

void listen_to_wire(const WireEvent& event) {
    const std::vector<Finding> findings = wire_findings(event);
    if (running->options.layers.wire) write_wire(event, findings);
    Mistakes& mistakes =
        event.kind == WireKind::timed_out ? running->mistakes_of_host : running->mistakes_of_link;
    for (const Finding& finding : findings)
        keep_mistake(mistakes, finding, {{}, 0, 0, acting_scenario_line()}, "line");
}

/// Answers that no command gave, as those to a touch, come before what is next.
void flush_lone_answer(TraceKind next) {
    const bool goes_on = next == TraceKind::answer || next == TraceKind::byte ||
                         next == TraceKind::letters || next == TraceKind::parameter ||
                         next == TraceKind::block || next == TraceKind::remark;
    if (!running->reader.open && !goes_on) flush_answer();
}

void listen(const TraceEvent& event) {
    flush_lone_answer(event.kind);
    take_event(running->reader, event);
    switch (event.kind) {
    case TraceKind::answer:
        running->answer.insert(running->answer.end(), event.bytes.begin(), event.bytes.end());
        break;
    case TraceKind::press:
        take_touch(event, "press");
        break;
    case TraceKind::drag:
        take_touch(event, "drag");
        break;
    case TraceKind::release:
        take_touch(event, "release");
        break;
    case TraceKind::reset:
        write_reset(event.from);
        break;
    default:
        break;
    }
}

}  // namespace

std::string words_of(const Mistake& mistake, const std::string& scenario) {
    std::string here = scenario;
    if (mistake.scenario_line > 0) here += ':' + std::to_string(mistake.scenario_line);
    std::string words = (mistake.place.empty() ? here : mistake.place) + ": " +
                        std::string(severity_of(mistake.finding)) + ": ";
    if (!mistake.where.empty()) words += mistake.where + ": ";
    words += words_of(mistake.finding);
    if (mistake.count > 1) words += ", " + std::to_string(mistake.count) + " times";
    return mistake.place.empty() ? words : words + " (" + here + ')';
}

std::string take_layers(const std::string& list, TraceLayers& layers) {
    layers = {false, false, false, false};
    std::string_view rest = list;
    while (true) {
        const std::string_view name = rest.substr(0, rest.find(','));
        bool* const layer = name == "wire"      ? &layers.wire
                            : name == "command" ? &layers.command
                            : name == "touch"   ? &layers.touch
                            : name == "answer"  ? &layers.answer
                                                : nullptr;
        if (layer == nullptr)
            return in_quotes(name) + " is no layer; there are wire, command, touch and answer";
        *layer = true;
        if (name.size() == rest.size()) return "";
        rest.remove_prefix(name.size() + 1);
    }
}

void start_trace(const TraceOptions& options, std::int64_t (*clock_us)()) {
    if (options.form == TraceForm::none && options.strictness == Strictness::off) return;
    running = std::make_unique<Trace>();
    running->options = options;
    running->clock_us = clock_us;
    running->reader.done = [](const Step& step) {
        take_step(step);
        flush_answer();
    };
    if (options.form != TraceForm::none) {
        running->file = options.file == "-" ? stderr : std::fopen(options.file.c_str(), "we");
        if (running->file == nullptr)
            running->write_fault = errno;
        else if (running->file != stderr)
            // Line by line, so that a run that dies has told all that it did.
            (void)std::setvbuf(running->file, nullptr, _IOLBF, BUFSIZ);
    }
    trace_listener = listen;
    wire_listener = listen_to_wire;
}

bool trace_is_written() { return running != nullptr && running->options.form != TraceForm::none; }

void allow_finding(const std::string& name, int scenario_line) {
    if (running != nullptr) running->allowed[scenario_line].try_emplace(name, false);
}

void tell_finding(const Finding& finding, int scenario_line) {
    if (running != nullptr) write_finding(running->mistakes_of_host, finding, scenario_line);
}

std::vector<Mistake> take_mistakes(std::size_t& unkept) {
    std::vector<Mistake> taken;
    if (running == nullptr) return taken;
    for (Mistakes* mistakes :
         {&running->mistakes, &running->mistakes_of_link, &running->mistakes_of_host}) {
        std::erase_if(mistakes->list, is_allowed);
        std::move(mistakes->list.begin(), mistakes->list.end(), std::back_inserter(taken));
        unkept += mistakes->unkept;
        *mistakes = {};
    }
    return taken;
}

TraceFaults finish_trace() {
    if (running == nullptr) return {};
    trace_listener = nullptr;
    wire_listener = nullptr;
    end_step_and_answer();
    if (running->file != nullptr && running->file != stderr && std::fclose(running->file) != 0 &&
        running->write_fault == 0)
        running->write_fault = errno;
    TraceFaults faults{};
    if (running->write_fault != 0)
        faults.unwritten =
            "can't write " + running->options.file + ": " + errno_text(running->write_fault);
    faults.mistakes = take_mistakes(faults.unkept);
    add_unused_allows(faults.mistakes);
    forget_places();
    running.reset();
    return faults;
}

}  // namespace orvanel
