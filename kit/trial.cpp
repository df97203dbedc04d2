#include "kit/trial.h"

#include "base/bytes.h"
#include "firmware/core/ground/requests.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/roof/loop.h"
#include "firmware/core/roof/power_on.h"
#include "firmware/store/ground/eeprom.h"
#include "firmware/store/ground/macro.h"
#include "firmware/store/roof/timers.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/finger.h"
#include "firmware/touch/menu.h"
#include "host/trace/byte_hints.h"
#include "host/trace/remarks.h"
#include "host/trace/steps.h"
#include "kit/commands.h"
#include "kit/image.h"
#include "link/ground/pipes.h"

#include <algorithm>
#include <array>
#include <deque>
#include <set>
#include <tuple>

namespace orvanel {

namespace {

constexpr std::int64_t us_per_ms = 1000;
constexpr std::int64_t byte_us = 10;
constexpr std::int64_t tick_us = tick_ms * us_per_ms;

// How long the module is left to itself after each act.
constexpr std::int64_t quiet_us = 26'000'000;  // the longest timer has run out by then
constexpr std::int64_t max_us = 60'000'000;    // for what never comes to rest
constexpr long max_act_bytes = 20'000;
constexpr long max_busy_bytes = 100'000;             // without a rest: an endless macro
constexpr std::int64_t max_busy_us = 3'600'000'000;  // likewise, if it waits
constexpr long act_costs = 1'000;                    // counted as bytes

constexpr long max_bytes = 2'000'000;        // of all runs
constexpr long whole_image_bytes = 4'000;    // what a command counts that goes over the whole image
constexpr std::size_t max_findings = 1000;   // kept
constexpr std::size_t max_shown_bytes = 60;  // characters of a command

/// What happens to the module from outside.
struct Act {
    enum { start, press, lift } kind;
    std::array<std::uint8_t, 4> command;  // start: the bytes of the command
    int x, y;                             // press: dots
};

/// A way to a state of the module.
struct Visit {
    std::uint8_t reset;
    std::vector<Act> acts;
    bool alone;  // begins with a macro that nothing in the image starts
};

using Spot = std::tuple<int, int, AreaType, int, int>;  // place, type and codes of what is touched

struct Trial {
    // Of all runs.
    std::vector<TrialFinding> findings;
    std::set<std::string> reported;
    std::set<int> drawn;                    // pictures
    std::set<int> touch_codes, menu_codes;  // of all areas and menu rows that were defined
    bool starts_any_row;                    // by the macro of a menu's selected row
    std::set<std::pair<int, int>> alone;    // macros that the trial started itself
    std::set<std::pair<int, int>> ran;      // macros, by table and number
    std::set<Spot> touched;
    std::deque<Visit> visits;
    long bytes_left = max_bytes;

    // Of the present run.
    Visit visit;
    std::size_t next_act;
    std::span<const std::uint8_t> stream;
    std::size_t fed;
    long busy_limit, busy_bytes, act_bytes;
    std::int64_t now_us, next_tick_us, act_began_us, last_byte_us;
    StepReader reader;
};

// Null but within try_image.
constinit Trial* trial = nullptr;

bool has_macro(int table, int number) {
    const int at = table + macro_record_size * number;
    return is_macro_length(le16(eeprom_at(at + 2), eeprom_at(at + 3)));
}

/// Counts what has passed since the last act.
void pay() {
    trial->bytes_left -= trial->act_bytes + act_costs;
    trial->act_bytes = 0;
}

void end_run() {
    pay();
    shutdown_requested = true;
}

void tell_finding(TrialFinding found);

Kind kind_of_macro(const ByteSource& source) {
    if (source.origin != ByteOrigin::macro) return Kind::number;
    for (const Kind kind : {Kind::normal, Kind::touch, Kind::menu})
        if (table_of(kind).offset == source.macro_table) return kind;
    return Kind::power_on;
}

/// Something runs on and on: one macro after the other, or one that starts itself.
void stop_endless() {
    const ByteSource& source = trial->reader.last_source;
    const std::string who =
        source.origin == ByteOrigin::macro ? name_of(source) : std::string("the stream");
    if (!shutdown_requested.load())
        tell_finding({"",
                      {FindingKind::endless,
                       who + " is among what runs on without an end: nothing else has its turn"},
                      {},
                      kind_of_macro(source),
                      static_cast<int>(source.number)});
    end_run();
}

void count_bytes(long count) {
    trial->act_bytes += count;
    trial->busy_bytes += count;
    if (trial->busy_bytes > trial->busy_limit) stop_endless();
}

// --- what the module tells

void tell_finding(TrialFinding found) {
    const std::string place = words_of(found.place);
    if (trial->findings.size() < max_findings &&
        trial->reported.insert(place + '\n' + found.where + '\n' + words_of(found.finding)).second)
        trial->findings.push_back(std::move(found));
}

/// The command as a kit writes it, cut to a few words.
std::string command_text(const Bytes& bytes) {
    const std::vector<std::string> lines = lines_from(bytes);
    std::string text = lines.empty() ? "" : lines.front();
    if (text.size() > max_shown_bytes) text.replace(max_shown_bytes, std::string::npos, "...");
    return text;
}

/// Whether it may be right where a page of the device is on the glass.
bool depends_on_page(FindingKind kind) {
    return kind == kind_of(Remark::missing_bar) || kind == kind_of(Remark::missing_glyph) ||
           kind == kind_of(Remark::areas_full) || kind == kind_of(Remark::menus_full) ||
           kind == FindingKind::areas_overlap || kind == FindingKind::same_code ||
           kind == FindingKind::text_unseen;
}

std::string title_of(const Step& step, const SourcePlace& place) {
    if (step.count == 0) return "a timer or a touch";
    std::string title = step.source.origin == ByteOrigin::macro ? name_of(step.source) : "stream";
    if (place.line == 0) title += " at " + hex4(static_cast<int>(step.source.offset));
    return title + ", " + command_text(step.bytes);
}

/// The codes of an area that a command defines, which start the macros of these numbers.
void note_codes(const Step& step) {
    if (step.group == 'N' && step.op == 'M') trial->starts_any_row = true;
    const bool is_picture = step.op == 'U' || step.op == 'J';
    const bool is_area = is_picture || step.op == 'T' || step.op == 'K' || step.op == 'M';
    const std::size_t down = is_picture ? 3 : 4;
    if (step.group != 'A' || !is_area || step.numbers.size() < down + 2) return;
    trial->touch_codes.insert(step.numbers[down].value);
    trial->touch_codes.insert(step.numbers[down + 1].value);
    if (step.op != 'M' || step.numbers.size() < down + 3) return;
    const auto rows = std::count(step.bytes.begin(), step.bytes.end(), '|');
    for (int row = 0; row < rows; ++row)
        trial->menu_codes.insert(low8(step.numbers[down + 2].value + row));
}

/// The picture that a command draws, if it draws one of the image.
void note_picture(const Step& step) {
    const bool draws = (step.group == 'U' && step.op == 'I') ||
                       (step.group == 'A' && (step.op == 'U' || step.op == 'J'));
    if (draws && step.numbers.size() > 2) trial->drawn.insert(step.numbers[2].value);
}

void take_step(const Step& step) {
    // A command that the end of the run has cut short reads zeros.
    if (shutdown_requested.load()) return;
    // The commands that the trial itself sends are none of the kit's.
    if (step.count != 0 && step.source.origin == ByteOrigin::companion && trial->stream.empty())
        return;
    for (const Finding& finding : told_together(step.findings)) {
        if (trial->visit.alone && depends_on_page(finding.kind)) continue;
        const bool unseen = finding.kind == FindingKind::text_unseen;
        const SourcePlace place = place_of(unseen ? step.lost : step.source);
        tell_finding({title_of(step, place), finding, place});
    }
    note_picture(step);
    note_codes(step);
}

void listen(const TraceEvent& event) {
    if (event.kind == TraceKind::byte && event.source.origin == ByteOrigin::macro)
        trial->ran.insert({event.source.macro_table, static_cast<int>(event.source.number)});
    if (event.kind == TraceKind::letters &&
        (event.from == '&' || (event.from == 'S' && event.to == 'I')))
        count_bytes(whole_image_bytes);
    take_event(trial->reader, event);
}

// --- what happens to the module

void add_visit(std::initializer_list<Act> acts) {
    Visit visit = trial->visit;
    visit.acts.insert(visit.acts.end(), acts);
    trial->visits.push_back(std::move(visit));
}

/// Plans a touch at this dot, unless the like of it has been touched already.
void plan_touch(const TouchArea& area, int y, int code) {
    const int x = (area.x1 + area.x2) / 2;
    if (!trial->touched.insert({x, y, area.type, code, area.up_code}).second) return;
    const Act press{Act::press, {}, x, y}, lift{Act::lift, {}, 0, 0};
    // A switch says something else when it is pressed again.
    if (area.type == AreaType::toggle)
        add_visit({press, lift, press, lift});
    else
        add_visit({press, lift});
}

void plan_touches_of(const TouchArea& area) {
    const int middle = (area.y1 + area.y2) / 2;
    switch (area.type) {
    case AreaType::key:
    case AreaType::toggle:
        if (has_macro(touch_macro_table, area.down_code) ||
            has_macro(touch_macro_table, area.up_code))
            plan_touch(area, middle, area.down_code);
        return;
    case AreaType::opener:
        return plan_touch(area, middle, area.down_code);
    case AreaType::list:
        for (int row = 0; row < menu_items; ++row)
            plan_touch(area, area.y1 + (2 * row + 1) * (area.y2 - area.y1 + 1) / (2 * menu_items),
                       area.up_code + row);
        return;
    default:
        return;
    }
}

void do_act(const Act& act) {
    switch (act.kind) {
    case Act::start:
        rx_pipe_put_block(act.command);
        break;
    case Act::press:
        put_finger(act.x, act.y);
        break;
    case Act::lift:
        lift_finger();
        break;
    }
}

/// A macro or the stream has ended within a command, which would take what the trial does next for
/// its rest.
bool is_unfinished() {
    const StepReader& reader = trial->reader;
    return reader.open && !reader.step.is_text && reader.waits &&
           (reader.step.source.origin == ByteOrigin::macro || !trial->stream.empty());
}

/// The module has come to rest after an act, or never will.
void act_is_over() {
    pay();
    if (is_unfinished()) {
        Step step = trial->reader.step;
        add_unfinished_hint(step);
        take_step(step);
        return end_run();
    }
    trial->act_began_us = trial->last_byte_us = trial->now_us;
    if (trial->next_act < trial->visit.acts.size())
        return do_act(trial->visit.acts[trial->next_act++]);
    for (int i = 0; i < area_count; ++i)
        plan_touches_of(touch_area(i));
    end_run();
}

bool feed_more() {
    if (trial->fed == trial->stream.size() || rx_count() > 0) return false;
    const std::size_t left = trial->stream.size() - trial->fed;
    const std::size_t now = std::min<std::size_t>(left, low_mark);
    const auto part = trial->stream.subspan(trial->fed, now);
    rx_pipe_put_block(
        part, {.origin = ByteOrigin::companion, .offset = static_cast<std::uint32_t>(trial->fed)});
    trial->fed += now;
    return true;
}

void run(const Visit& visit, std::span<const std::uint8_t> image,
         std::span<const std::uint8_t> stream) {
    trial->visit = visit;
    trial->next_act = 0;
    trial->stream = stream;
    trial->fed = 0;
    trial->busy_limit = max_busy_bytes + std::ssize(stream);
    trial->busy_bytes = trial->act_bytes = 0;
    trial->now_us = trial->act_began_us = trial->last_byte_us = 0;
    trial->next_tick_us = tick_us;
    trial->reader = {.done = take_step};
    cold_start();
    eeprom_reset_to(static_cast<int>(image.size()), image);
    reset_kind = visit.reset;
    shutdown_requested = false;
    run_firmware();
    shutdown_requested = false;
}

void tell_unreached(Kind kind, int number, const std::string& words) {
    if (trial->alone.contains({table_of(kind).offset, number}))
        tell_finding(
            {"", {FindingKind::unreached, words + " of the kit has this code"}, {}, kind, number});
}

/// Where the kit defines areas at all, the macros that none of these starts. A device that defines
/// its keys itself may do so.
void tell_unreached_macros() {
    for (int number = 1; number < 256; ++number) {
        const std::string n = std::to_string(number);
        if (!trial->touch_codes.empty() && !trial->touch_codes.contains(number))
            tell_unreached(Kind::touch, number, "touch macro " + n + ": no key or switch");
        if (!trial->menu_codes.empty() && !trial->menu_codes.contains(number) &&
            !trial->starts_any_row)
            tell_unreached(Kind::menu, number, "menu macro " + n + ": no row of a menu");
    }
}

/// Where macros draw pictures at all, those that none draws.
void tell_undrawn_pictures() {
    if (trial->drawn.empty()) return;
    for (int number = 0; number < 256; ++number) {
        const int at = picture_table + 2 * number;
        const bool is_there = le16(eeprom_at(at), eeprom_at(at + 1)) != unprogrammed;
        if (is_there && !trial->drawn.contains(number))
            tell_finding({"",
                          {FindingKind::unreached,
                           "picture " + std::to_string(number) + ": nothing in the kit draws it"},
                          {},
                          Kind::picture,
                          number});
    }
}

/// Plans a run of a macro that nothing has started so far. False if there is none.
bool plan_left_macro() {
    constexpr std::array<std::pair<Kind, std::uint8_t>, 3> tables{
        {{Kind::normal, 'N'}, {Kind::touch, 'T'}, {Kind::menu, 'M'}}};
    for (const auto& [kind, letter] : tables)
        for (int number = 0, table = table_of(kind).offset; number <= table_of(kind).max; ++number)
            if (has_macro(table, number) && trial->ran.insert({table, number}).second) {
                trial->alone.insert({table, number});
                const Act start{Act::start, {lead_in_esc, 'M', letter, low8(number)}, 0, 0};
                trial->visits.push_back({0, {start}, true});
                return true;
            }
    return false;
}

void run_all(std::span<const std::uint8_t> image, std::span<const std::uint8_t> stream) {
    if (!stream.empty()) {
        // The stream brings its own image.
        run({}, Bytes(image.size(), erased_byte), stream);
        trial->visits.clear();
        trial->touched.clear();
        trial->ran.clear();
    }
    eeprom_reset_to(static_cast<int>(image.size()), image);
    for (int kind = 0; kind <= table_of(Kind::power_on).max; ++kind)
        if (kind == 0 || has_macro(power_on_macro_table, kind))
            trial->visits.push_back({low8(kind), {}, false});
    trial->bytes_left = max_bytes;
    while (!trial->visits.empty() || plan_left_macro()) {
        if (trial->bytes_left <= 0) {
            tell_finding(
                {"", {FindingKind::trial_cut, "the macros take too long to try all that they do"}});
            return;
        }
        const Visit visit = trial->visits.front();
        trial->visits.pop_front();
        run(visit, image, {});
        eeprom_reset_to(static_cast<int>(image.size()), image);
    }
    tell_undrawn_pictures();
    tell_unreached_macros();
}

}  // namespace

void trial_time_passes(int ms) {
    trial->now_us += ms * us_per_ms;
    for (; trial->next_tick_us <= trial->now_us; trial->next_tick_us += tick_us)
        firmware_tick();
    if (trial->now_us - trial->act_began_us > max_busy_us) end_run();
}

void trial_idles() {
    trial->busy_bytes = 0;
    if (feed_more()) return;
    if (trial->now_us - trial->last_byte_us < quiet_us &&
        trial->now_us - trial->act_began_us < max_us && trial->act_bytes < max_act_bytes)
        return;
    act_is_over();
}

void trial_byte_taken() {
    trial->now_us += byte_us;
    trial->last_byte_us = trial->now_us;
    count_bytes(1);
}

std::vector<TrialFinding> try_image(std::span<const std::uint8_t> image,
                                    std::span<const std::uint8_t> stream) {
    Trial whole{};
    trial = &whole;
    trace_listener = listen;
    run_all(image, stream);
    trace_listener = nullptr;
    trial = nullptr;
    return whole.findings;
}

}  // namespace orvanel
