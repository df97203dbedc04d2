#include "host/scenario/hints.h"

#include "base/nearest.h"
#include "base/quoting.h"
#include "firmware/raster/planes.h"
#include "host/scenario/report.h"
#include "host/trace/places.h"
#include "host/trace/trace_writer.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace orvanel {

namespace {

constexpr std::array<std::string_view, 27> acting{
    "send",   "line", "cts",  "touch", "lift",   "mouse-down",  "mouse-move", "mouse-up", "key",
    "menu",   "drop", "open", "feed",  "demo",   "reset",       "port",       "protocol", "bridge",
    "dialog", "tap",  "hold", "drag",  "choose", "line-absent", "line-speed", "include",  "fetch"};
constexpr std::array<std::string_view, 4> neutral{"scenario", "allow", "wait", "settle"};

template <std::size_t n>
bool is_one_of(const std::array<std::string_view, n>& names, std::string_view name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// A glass that was compared.
struct Seen {
    BitPlane dots;
    int line;
};

struct Memory {
    std::vector<std::string> allowed;  // with the next command
    bool acted;                        // something was done to the module
    bool checked;                      // something was expected or awaited
    bool looked;                       // something was printed or kept for somebody to look at
    std::array<std::optional<Seen>, 3> seen;  // by Shown
    std::map<std::string, int> kept;          // pictures, and the line of each
    std::set<std::string> compared;
};
Memory memory{};

void hint(FindingKind kind, std::string words, int line) {
    tell_finding({kind, std::move(words)}, line);
}

std::string times(std::size_t count, const char* what) {
    return std::to_string(count) + ' ' + what + (count == 1 ? "" : "s");
}

}  // namespace

void note_command(std::string_view name) {
    if (is_one_of(neutral, name)) return;
    for (const std::string& kind : memory.allowed)
        allow_finding(kind, scenario_line);
    memory.allowed.clear();
    if (is_one_of(acting, name)) {
        set_acting_line(scenario_line);
        memory.acted = true;
    } else if (name.starts_with("expect-") || name.starts_with("await-")) {
        memory.checked = true;
    } else {
        memory.looked = true;
    }
}

std::string allow_next(const std::string& name) {
    std::vector<std::string_view> names;
    for (const FindingType& type : finding_types())
        names.push_back(type.name);
    if (std::find(names.begin(), names.end(), name) == names.end())
        return "nothing that is found has the name " + in_quotes(name) + is_it(name, names);
    memory.allowed.push_back(name);
    return "";
}

void hint_on_answers(std::size_t expected) {
    if (expected == 0 && !memory.acted)
        hint(FindingKind::no_question, "no answer is expected, and nothing was sent before it",
             scenario_line);
}

void hint_on_screen(const std::string& path, Shown shown) {
    memory.compared.insert(path);
    auto& seen = memory.seen[static_cast<std::size_t>(shown)];
    const BitPlane dots = take_glass(shown);
    if (seen && seen->dots == dots)
        hint(FindingKind::same_screen,
             "the glass is as it was at line " + std::to_string(seen->line) +
                 ": nothing has changed a dot of it since",
             scenario_line);
    seen = {dots, scenario_line};
}

void hint_on_line(std::size_t count) {
    if (count > 0 && com_port.load() <= 0)
        hint(FindingKind::bytes_lost,
             times(count, "byte") + (count == 1 ? " was" : " were") +
                 " lost: no line is open; 'port N' opens one",
             scenario_line);
}

void note_picture(const std::string& path) { memory.kept.try_emplace(path, scenario_line); }

void hint_on_end() {
    if (memory.acted && !memory.checked && !memory.looked && !trace_is_written())
        hint(FindingKind::no_check, "the scenario expects nothing: it can't fail", 0);
    if (!memory.compared.empty())
        for (const auto& [path, line] : memory.kept)
            if (!memory.compared.contains(path))
                hint(FindingKind::not_compared,
                     path + " is kept and never compared: expect-screen does that", line);
    const auto left = static_cast<std::size_t>(tx_count());
    if (protocol_on.load() && com_port.load() > 0 && left > 0)
        hint(FindingKind::unfetched,
             times(left, "byte") + " of answers " + (left == 1 ? "was" : "were") +
                 " never fetched: the frame with S asks for them",
             0);
}

}  // namespace orvanel
