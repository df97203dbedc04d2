#include "host/trace/trace_writer.h"

#include "base/files.h"
#include "base/hex.h"
#include "base/quoting.h"
#include "firmware/core/ground/trace.h"
#include "host/trace/remarks.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

namespace orvanel {

namespace {

constexpr std::size_t max_kept_bytes = 4096;  // bytes of one command
constexpr std::size_t max_shown_bytes = 64;   // bytes in a line of text
constexpr std::size_t max_text_bytes = 64;    // of terminal text to a line
constexpr std::size_t max_faults = 20;

/// What one line is made of: a command, or a stretch of text for the terminal.
struct Step {
    bool open;
    bool is_text;
    ByteSource source;
    std::vector<std::uint8_t> bytes;  // the first max_kept_bytes of `count`
    std::size_t count;
    std::string letters;
    std::vector<int> parameters;
    std::size_t raw_start;  // bytes from here on are no numbers
    const char* role;
    std::vector<std::string> remarks;
};

struct Trace {
    TraceOptions options;
    std::int64_t (*clock_us)();
    std::FILE* file;
    int write_fault;  // errno of the first line that couldn't be written
    Step step;
    ByteSource last_source;
    std::uint8_t last_byte;
    std::vector<std::uint8_t> answer;
    std::vector<std::string> faults;
    std::size_t fault_count;
    bool in_reset;  // what a reset finds missing is nobody's command
};

std::unique_ptr<Trace> running;

bool is_plain(std::uint8_t byte) { return byte >= 0x20 && byte < 0x7F; }

std::string_view text_of(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// A text in double quotes as a scenario takes it, with letters for the ends of lines alone.
std::string quoted(std::span<const std::uint8_t> bytes) {
    return text_piece(text_of(bytes), "\\\"\n\r");
}

/// The same for JSON, where a byte is the character of that number.
std::string json_quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        const auto byte = static_cast<std::uint8_t>(c);
        if (c == '"' || c == '\\')
            (quoted += '\\') += c;
        else if (is_plain(byte))
            quoted += c;
        else
            quoted += "\\u00" + hex_digits(byte, 2);
    }
    return quoted + '"';
}

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

/// One JSON object: its members one after the other, each value written out already.
std::string json_object(std::initializer_list<std::pair<std::string_view, std::string>> members) {
    std::string object = "{\"time\":" + time_now();
    for (const auto& [name, value] : members)
        if (!value.empty()) object += ",\"" + std::string(name) + "\":" + value;
    return object + '}';
}

template <typename List, typename Form>
std::string joined(const List& list, const char* between, Form form) {
    std::string text;
    for (const auto& item : list) {
        if (!text.empty()) text += between;
        text += form(item);
    }
    return text;
}

std::span<const std::uint8_t> raw_bytes(const Step& step) {
    const std::span<const std::uint8_t> bytes(step.bytes);
    return bytes.subspan(std::min(step.raw_start, bytes.size()));
}

/// Bytes after the numbers, without the one that ends a text; whether they are one.
bool as_text(std::span<const std::uint8_t>& raw) {
    const bool ends = !raw.empty() && (raw.back() == 0 || raw.back() == '\n' || raw.back() == '\r');
    const auto inside = ends ? raw.first(raw.size() - 1) : raw;
    if (!std::all_of(inside.begin(), inside.end(),
                     [](std::uint8_t b) { return is_plain(b) || b >= 0x80; }))
        return false;
    raw = inside;
    return true;
}

std::string shown_bytes(const Step& step) {
    const auto shown = std::span(step.bytes).first(std::min(step.bytes.size(), max_shown_bytes));
    std::string text = hex_of(shown, " ");
    if (step.count > shown.size()) text += " ... (" + std::to_string(step.count) + " bytes)";
    return text;
}

std::string raw_words(const Step& step) {
    auto raw = raw_bytes(step);
    if (raw.empty()) return "";
    const std::size_t all = step.count - step.raw_start;
    if (as_text(raw) && all <= max_shown_bytes) return ' ' + quoted(raw);
    return " + " + std::to_string(all) + (all == 1 ? " byte" : " bytes");
}

std::string text_line(const Step& step) {
    std::string line = time_now() + ' ' + name_of(step.source) + ' ' + shown_bytes(step) + " | ";
    if (step.is_text) {
        line += quoted(step.bytes) + " | text for the terminal";
    } else {
        line += step.letters;
        for (const int parameter : step.parameters)
            line += ' ' + std::to_string(parameter);
        line += raw_words(step) + " | " + (step.role == nullptr ? "undefined" : step.role);
    }
    const std::string remarks = joined(step.remarks, "; ", [](const auto& r) { return r; });
    return line + " | " + (remarks.empty() ? "ok" : remarks);
}

std::string json_line(const Step& step) {
    const std::string remarks = '[' + joined(step.remarks, ",", json_quoted) + ']';
    const std::string bytes = '"' + hex_of(step.bytes, "") + '"';
    const std::string count = std::to_string(step.count);
    const std::string source = json_quoted(name_of(step.source));
    if (step.is_text)
        return json_object({{"source", source},
                            {"bytes", bytes},
                            {"count", count},
                            {"text", json_quoted(text_of(step.bytes))},
                            {"role", json_quoted("text for the terminal")},
                            {"remarks", remarks}});
    auto raw = raw_bytes(step);
    const std::string text = !raw.empty() && as_text(raw) ? json_quoted(text_of(raw)) : "";
    const auto number = [](int n) { return std::to_string(n); };
    return json_object({{"source", source},
                        {"bytes", bytes},
                        {"count", count},
                        {"command", json_quoted(step.letters)},
                        {"parameters", '[' + joined(step.parameters, ",", number) + ']'},
                        {"text", text},
                        {"role", step.role == nullptr ? "" : json_quoted(step.role)},
                        {"remarks", remarks}});
}

void keep_fault(const Step& step) {
    if (!running->options.strict || step.remarks.empty()) return;
    ++running->fault_count;
    if (running->faults.size() < max_faults) running->faults.push_back(text_line(step));
}

void flush_answer() {
    if (running->answer.empty()) return;
    const std::string text = hex_of(running->answer, " ");
    if (running->options.form == TraceForm::json)
        write_line(json_object({{"answer", '"' + hex_of(running->answer, "") + '"'}}));
    else
        write_line(time_now() + " answer " + text);
    running->answer.clear();
}

void flush_step() {
    Step& step = running->step;
    if (step.open) {
        write_line(running->options.form == TraceForm::json ? json_line(step) : text_line(step));
        keep_fault(step);
    }
    step = {};
    flush_answer();
}

void flush_text() {
    if (running->step.is_text || !running->step.open) flush_step();
}

void add_byte(Step& step, std::uint8_t byte) {
    if (step.bytes.size() < max_kept_bytes) step.bytes.push_back(byte);
    ++step.count;
}

void begin_step(bool is_text) {
    flush_text();
    running->step.open = true;
    running->step.is_text = is_text;
    running->step.source = running->last_source;
}

bool same(const ByteSource& a, const ByteSource& b) {
    return a.origin == b.origin && a.macro_number == b.macro_number &&
           a.macro_table == b.macro_table;
}

void take_text(std::uint8_t byte) {
    const Step& step = running->step;
    if (!step.is_text || !same(step.source, running->last_source) || step.count == max_text_bytes)
        begin_step(true);
    add_byte(running->step, byte);
}

void take_remark(const TraceEvent& event) {
    const std::string words = words_of(event.remark, event.from, event.to);
    Step& step = running->step;
    if (step.open && !step.is_text) {
        if (std::find(step.remarks.begin(), step.remarks.end(), words) == step.remarks.end())
            step.remarks.push_back(words);
        return;
    }
    if (running->in_reset) return;
    // What no command asked for: a timed macro that isn't there, a touch whose answer has no room.
    flush_step();
    step.open = true;
    step.letters = "-";
    step.role = event.remark == Remark::answer_dropped ? "touch" : "timed macro";
    step.remarks.push_back(words);
    flush_step();
}

void take_touch(const TraceEvent& event, const char* kind) {
    flush_text();
    const bool at = event.kind != TraceKind::release;
    if (running->options.form == TraceForm::json)
        write_line(json_object({{"touch", json_quoted(kind)},
                                {"x", at ? std::to_string(event.from) : ""},
                                {"y", at ? std::to_string(event.to) : ""},
                                {"area", json_quoted(event.role)}}));
    else
        write_line(time_now() + ' ' + kind +
                   (at ? ' ' + std::to_string(event.from) + ' ' + std::to_string(event.to) : "") +
                   " on " + event.role);
}

void take_reset(int kind) {
    flush_step();
    running->in_reset = true;
    if (running->options.form == TraceForm::json)
        write_line(json_object({{"reset", std::to_string(kind)}}));
    else
        write_line(time_now() + " reset " + std::to_string(kind));
}

void listen(const TraceEvent& event) {
    Step& step = running->step;
    if (event.kind == TraceKind::byte || event.kind == TraceKind::idle) running->in_reset = false;
    switch (event.kind) {
    case TraceKind::byte:
        running->last_source = event.source;
        running->last_byte = static_cast<std::uint8_t>(event.from);
        if (step.open && !step.is_text) add_byte(step, running->last_byte);
        break;
    case TraceKind::begin:
        begin_step(false);
        add_byte(step, running->last_byte);
        break;
    case TraceKind::letters:
        step.letters = step.bytes.front() == '#' ? "#" : "ESC";
        for (const int letter : {event.from, event.to})
            if (letter != 0) {
                const char c = static_cast<char>(letter);
                step.letters += ' ' + printable({&c, 1});
            }
        step.role = event.role;
        step.raw_start = step.count;
        break;
    case TraceKind::parameter:
        step.parameters.push_back(event.from);
        step.raw_start = step.count;
        break;
    case TraceKind::remark:
        take_remark(event);
        break;
    case TraceKind::end:
        flush_step();
        break;
    case TraceKind::text:
        take_text(running->last_byte);
        break;
    case TraceKind::idle:
        flush_text();
        break;
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
        take_reset(event.from);
        break;
    }
}

}  // namespace

void start_trace(const TraceOptions& options, std::int64_t (*clock_us)()) {
    if (options.form == TraceForm::none && !options.strict) return;
    running = std::make_unique<Trace>();
    running->options = options;
    running->clock_us = clock_us;
    if (options.form != TraceForm::none) {
        running->file = options.file == "-" ? stderr : std::fopen(options.file.c_str(), "we");
        if (running->file == nullptr)
            running->write_fault = errno;
        else if (running->file != stderr)
            // Line by line, so that a run that dies has told all that it did.
            (void)std::setvbuf(running->file, nullptr, _IOLBF, BUFSIZ);
    }
    trace_listener = listen;
}

TraceFaults finish_trace() {
    TraceFaults faults;
    if (running == nullptr) return faults;
    trace_listener = nullptr;
    flush_step();
    if (running->file != nullptr && running->file != stderr && std::fclose(running->file) != 0 &&
        running->write_fault == 0)
        running->write_fault = errno;
    if (running->write_fault != 0)
        faults.unwritten =
            "can't write " + running->options.file + ": " + errno_text(running->write_fault);
    faults.remarks = std::move(running->faults);
    if (running->fault_count > faults.remarks.size())
        faults.remarks.push_back("and " +
                                 std::to_string(running->fault_count - faults.remarks.size()) +
                                 " commands more");
    running.reset();
    return faults;
}

}  // namespace orvanel
