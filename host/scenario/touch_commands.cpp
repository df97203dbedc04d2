#include "host/scenario/touch_commands.h"

#include "firmware/touch/finger.h"
#include "host/scenario/report.h"
#include "host/scenario/targets.h"
#include "host/scenario/waits.h"
#include "host/scenario/world.h"

#include <cstdlib>
#include <string>

namespace orvanel {

namespace {

constexpr std::int64_t seen_ms = 5000;  // how long the module has to look at the finger
constexpr int min_move = 2;             // dots on one axis: the module sees no smaller one

void fail(const std::string& fault) { report_fault(expectation_failed, fault); }

bool finger_was_seen() { return !finger_changed(); }

void report_unseen(const std::string& within) {
    fail("the module hasn't looked at the finger " + within +
         ": it runs a macro, or a command waits for the rest of its bytes");
    drop_steps();
    lift_finger();
}

void wait_until_seen() { wait_for_condition(finger_was_seen, report_unseen, seen_ms); }

void press(Dot dot) {
    put_finger(dot.x, dot.y);
    wait_until_seen();
}

void then_move(Dot dot) {
    add_step([dot] { press(dot); });
}

void then_lift() {
    add_step([] {
        lift_finger();
        wait_until_seen();
    });
    // What it has seen it has not yet done, on a thread of its own.
    add_step([] { const ModuleHalt halt; });
}

/// Why there is to be no touch, told.
bool can_touch(const std::string& fault, bool needs_free_finger) {
    std::string why = deaf_to_fingers();
    if (why.empty()) why = fault;
    if (why.empty() && needs_free_finger && finger_is_down())
        why = "the finger is on the glass already: 'lift' it first";
    if (!why.empty()) fail(why);
    return why.empty();
}

}  // namespace

void tap_command(const Arguments& a) {
    FoundDot found;
    {
        const ModuleHalt halt;
        found = find_tap(a.target);
        if (!can_touch(found.fault, true)) return;
    }
    press(found.dot);
    if (const std::int64_t ms = a.number; ms > 0) add_step([ms] { wait_for_time(ms); });
    then_lift();
}

void hold_command(const Arguments& a) {
    FoundDot found;
    {
        const ModuleHalt halt;
        found = find_tap(a.target);
        if (!can_touch(found.fault, false)) return;
    }
    press(found.dot);
}

void choose_command(const Arguments& a) {
    FoundDot found;
    {
        const ModuleHalt halt;
        found = find_row(a.target);
        if (!can_touch(found.fault, false)) return;
    }
    press(found.dot);
    then_lift();
}

void drag_command(const Arguments& a) {
    FoundDrag found{
        Dot{a.target.x, a.target.y}, {static_cast<int>(a.x), static_cast<int>(a.y)}, {}};
    {
        const ModuleHalt halt;
        if (a.target.by != By::dot)
            found = find_drag(a.target, {a.percent, static_cast<int>(a.value)});
        if (!can_touch(found.fault, true)) return;
    }
    const Dot to = found.to, from = found.from.value_or(to);
    press(from);
    if (std::abs(from.x - to.x) >= min_move || std::abs(from.y - to.y) >= min_move) then_move(to);
    then_lift();
}

}  // namespace orvanel
