#include "host/trace/steps.h"

#include "base/bytes.h"
#include "firmware/core/ground/requests.h"
#include "firmware/raster/refresh.h"
#include "firmware/store/ground/macro.h"
#include "host/trace/byte_hints.h"
#include "host/trace/hints.h"
#include "host/trace/remarks.h"

#include <algorithm>
#include <utility>

namespace orvanel {

namespace {

bool same_sender(const ByteSource& a, const ByteSource& b) {
    return a.origin == b.origin && a.macro_table == b.macro_table && a.number == b.number;
}

void add_byte(Step& step, std::uint8_t byte) {
    if (step.bytes.size() < max_step_bytes) step.bytes.push_back(byte);
    ++step.count;
}

bool leaves_macro(const Step& step, const ByteSource& next) {
    return step.source.origin == ByteOrigin::macro && !same_sender(step.source, next);
}

void add_finding(Step& step, Finding finding) {
    const auto told = [&](const Finding& f) {
        return f.kind == finding.kind && f.words == finding.words;
    };
    if (std::any_of(step.findings.begin(), step.findings.end(), told)) return;
    step.findings.push_back(std::move(finding));
}

void begin_step(StepReader& reader, bool is_text) {
    end_step(reader);
    reader.open = true;
    reader.step.is_text = is_text;
    reader.step.source = reader.last_source;
    reader.step.count = 0;
    add_byte(reader.step, reader.last_byte);
}

/// The macros that run, one a level, as far as a command of theirs has begun.
void note_level(StepReader& reader) {
    const ByteSource& source = reader.last_source;
    if (source.origin != ByteOrigin::macro) {
        reader.touch_level = 0;
        return;
    }
    // A command's first byte is never the last of its macro, so this is still its level.
    const int level = macro_depth;
    const bool by_touch =
        source.macro_table == touch_macro_table || source.macro_table == menu_macro_table;
    if (level < reader.touch_level) reader.touch_level = 0;
    if (by_touch && reader.touch_level == 0) reader.touch_level = level;
}

void begin_command(StepReader& reader) {
    reader.in_comment = false;
    note_level(reader);
    begin_step(reader, false);
    reader.waits = reader.left_macro = false;
    reader.step.by_touch = reader.touch_level != 0;
}

void end_command(StepReader& reader) {
    if (!reader.open || reader.step.is_text) return;
    if (reader.waits && breaking_off()) {
        add_unfinished_hint(reader.step);
        return end_step(reader);
    }
    if (reader.left_macro) add_macro_end_hint(reader.step);
    add_command_hints(reader.step);
    reader.out_of_step = loses_step(reader.step);
    reader.took_esc = takes_esc(reader.step);
    end_step(reader);
}

bool ends_line(std::uint8_t byte) { return byte == '\r' || byte == '\n'; }

/// Text while the terminal is off. What begins with a semicolon is meant as a comment.
void take_unseen(StepReader& reader) {
    const std::uint8_t byte = reader.last_byte;
    if (ends_line(byte))
        reader.in_comment = false;
    else if (byte == ';')
        reader.in_comment = true;
    if (reader.in_comment || ends_line(byte) || byte == ' ' || reader.step.is_lost) return;
    reader.step.is_lost = true;
    reader.step.lost = reader.last_source;
}

void take_text(StepReader& reader) {
    const Step& step = reader.step;
    const bool goes_on = reader.open && step.is_text &&
                         same_sender(step.source, reader.last_source) &&
                         step.count < max_text_bytes;
    if (goes_on)
        add_byte(reader.step, reader.last_byte);
    else
        begin_step(reader, true);
    if (!terminal_on) take_unseen(reader);
}

void take_number(Step& step, int value) {
    const std::size_t begin = step.numbers.empty() ? step.raw_start : step.numbers.back().end;
    step.numbers.push_back({value, begin, step.count});
    step.raw_start = step.count;
}

/// A text's missing characters are told together.
void take_missing_glyph(Step& step, int code) {
    auto& codes = step.missing_glyphs;
    if (std::find(codes.begin(), codes.end(), code) == codes.end()) codes.push_back(code);
    const auto told = std::find_if(step.findings.begin(), step.findings.end(), [](const auto& f) {
        return f.kind == kind_of(Remark::missing_glyph);
    });
    Finding finding{kind_of(Remark::missing_glyph), words_of_missing_glyphs(codes)};
    if (step.count == 0) finding.words += ": #NF chooses the font of lists";
    if (told == step.findings.end())
        step.findings.push_back(std::move(finding));
    else
        *told = std::move(finding);
}

void take_remark(StepReader& reader, const TraceEvent& event) {
    if (reader.waits && breaking_off()) return;  // of the zeros that end it
    if (event.remark == Remark::missing_glyph && reader.open && !reader.step.is_text)
        return take_missing_glyph(reader.step, event.from);
    if (event.remark == Remark::missing_glyph && !reader.in_reset) {
        // A touch has opened a list: all of its letters are told together.
        if (reader.open && reader.step.count > 0) end_step(reader);
        reader.open = true;
        reader.step.role = "list";
        return take_missing_glyph(reader.step, event.from);
    }
    Finding finding = finding_of(event.remark, event.from, event.to);
    const bool undefined =
        event.remark == Remark::undefined_op || event.remark == Remark::undefined_group;
    if (undefined && !reader.step.bytes.empty())
        finding.words +=
            words_of_cure(reader.step.bytes.front(), reader.step.group, reader.step.op);
    if (event.remark == Remark::wrapped) {
        // A number may be cut twice, to its 8 bits and to those that the command takes.
        const bool again = !reader.step.findings.empty() && reader.wrapped_to == event.from &&
                           reader.step.findings.back().kind == kind_of(Remark::wrapped);
        if (again) finding = finding_of(event.remark, reader.wrapped_from, event.to);
        if (again) reader.step.findings.pop_back();
        reader.wrapped_from = again ? reader.wrapped_from : event.from;
        reader.wrapped_to = event.to;
    }
    if (reader.open && !reader.step.is_text) return add_finding(reader.step, std::move(finding));
    if (reader.in_reset) return;
    // What no command asked for: a timed macro that isn't there, a touch whose answer has no room.
    end_step(reader);
    reader.step.role = event.remark == Remark::answer_dropped ? "touch" : "timed macro";
    reader.step.findings.push_back(std::move(finding));
    reader.open = true;
    end_step(reader);
}

}  // namespace

void end_step(StepReader& reader) {
    if (!reader.open) return;
    reader.open = false;
    if (reader.step.is_text && !reader.out_of_step) {
        const bool told = reader.took_esc && add_taken_esc_hint(reader.step);
        if (!told) add_text_hints(reader.step);
    }
    if (reader.step.is_text) reader.took_esc = false;
    reader.done(std::exchange(reader.step, {}));
}

void take_event(StepReader& reader, const TraceEvent& event) {
    const bool goes_on = event.kind == TraceKind::remark || event.kind == TraceKind::block;
    if (reader.open && reader.step.count == 0 && !goes_on) end_step(reader);
    Step& step = reader.step;
    if (event.kind == TraceKind::byte || event.kind == TraceKind::idle) reader.in_reset = false;
    switch (event.kind) {
    case TraceKind::byte:
        reader.last_source = event.source;
        reader.last_byte = low8(event.from);
        reader.waits = false;
        if (reader.open && !step.is_text) {
            add_byte(step, reader.last_byte);
            reader.left_macro = reader.left_macro || leaves_macro(step, reader.last_source);
        }
        break;
    case TraceKind::begin:
        begin_command(reader);
        break;
    case TraceKind::letters:
        step.group = low8(event.from);
        step.op = low8(event.to);
        step.role = event.role;
        step.raw_start = step.count;
        break;
    case TraceKind::parameter:
        if (!reader.waits) take_number(step, event.from);
        break;
    case TraceKind::block:
        step.blocks.push_back(event.block);
        step.moved = event.from;
        break;
    case TraceKind::remark:
        take_remark(reader, event);
        break;
    case TraceKind::end:
        end_command(reader);
        break;
    case TraceKind::text:
        take_text(reader);
        break;
    case TraceKind::idle:
        if (step.is_text) end_step(reader);
        reader.waits = reader.open;
        break;
    case TraceKind::reset:
        end_step(reader);
        reader.in_reset = true;
        break;
    case TraceKind::answer:
    case TraceKind::press:
    case TraceKind::drag:
    case TraceKind::release:
        break;
    }
}

}  // namespace orvanel
