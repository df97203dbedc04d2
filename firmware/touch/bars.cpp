#include "firmware/touch/bars.h"

#include "base/bytes.h"
#include "firmware/core/ground/draw_area.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/refresh.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/finger.h"
#include "firmware/touch/removal.h"
#include "link/ground/answers.h"

#include <algorithm>

namespace orvanel {

constinit std::array<BarGraph, 32> bar_slots{};
constinit BarGraph bar_work{};
constinit std::int32_t bar_current = 0;
constinit BarReport bar_send_mode{};

namespace {

constexpr std::int32_t no_bar = -1;

bool is_framed() { return (bar_work.kind & 1) != 0; }
bool is_pointer() { return bar_work.kind > 1; }
bool grows_sideways() { return bar_work.dir == 'L' || bar_work.dir == 'R'; }

/// Dots across the direction of growth, less the frame.
int bar_cross() {
    const int outer =
        grows_sideways() ? bar_work.y2 - bar_work.y1 + 1 : bar_work.x2 - bar_work.x1 + 1;
    return outer - (is_framed() ? 2 : 0);
}

void store_bar_work() {
    if (bar_current >= 0) bar_slots[static_cast<std::size_t>(bar_current)] = bar_work;
}

/// Makes `slot` the one in work. False if it holds no bar; then none is in work.
bool select_bar(int slot) {
    if (bar_current == slot) return true;
    store_bar_work();
    bar_work = bar_slots[static_cast<std::size_t>(slot)];
    bar_current = bar_work.dir == 0 ? no_bar : slot;
    return bar_current != no_bar;
}

/// As select_bar, for a command that needs the bar.
bool select_bar_or_remark(int slot) {
    const bool found = select_bar(slot);
    if (!found) remark(Remark::missing_bar, slot + 1);
    return found;
}

DrawArea bar_rectangle() { return {bar_work.x1, bar_work.y1, bar_work.x2, bar_work.y2}; }

/// Inverts `count` dots from place `from` on, counted from the usable start in the direction of
/// growth, by the usable width.
void invert_band(int from, int count, std::uint8_t pattern) {
    const int frame = is_framed() ? 1 : 0;
    const int x = bar_work.x1 + frame, y = bar_work.y1 + frame;
    const int to = from + count - 1, across = bar_cross() - 1;
    struct {
        int x1, y1, x2, y2;
    } band{};
    switch (bar_work.dir) {
    case 'R':
        band = {x + from, y, x + to, y + across};
        break;
    case 'L':
        band = {bar_work.x2 - frame - to, y, bar_work.x2 - frame - from, y + across};
        break;
    case 'U':
        band = {x, y + from, x + across, y + to};
        break;
    default:
        band = {x, bar_work.y2 - frame - to, x + across, bar_work.y2 - frame - from};
        break;
    }
    // A bar too narrow for its frame has nothing inside.
    if (band.x1 > band.x2 || band.y1 > band.y2) return;
    draw_area = {band.x1, low8(band.y1), band.x2, low8(band.y2)};
    fill_area(link_invert, pattern);
    refresh_area();
}

void invert_pointer(int pos) { invert_band(pos, bar_work.pattern, pattern_solid); }

void redraw_bar() {
    draw_area = bar_rectangle();
    if (is_framed()) {
        draw_box(pattern_clear);
    } else {
        fill_area(link_replace, pattern_clear);
        refresh_area();
    }
    if (is_pointer())
        invert_pointer(bar_work.pos);
    else if (bar_work.pos > 0)
        invert_band(0, bar_work.pos, bar_work.pattern);
}

/// Moves the bar in work to value v of its scale. False, and the value stays, if that is the same
/// dot. A pointer in a bar of two dots with a frame has the length -1, and moves back by a dot.
bool set_bar_value(int v) {
    const int rel = std::clamp(v - bar_work.low, 0, bar_work.steps - 1);
    const int pos = rel * bar_work.length / (bar_work.steps - 1);
    if (pos == bar_work.pos) return false;
    if (is_pointer()) {
        invert_pointer(bar_work.pos);
        invert_pointer(pos);
    } else {
        // Growing and shrinking are the same: the second inversion takes the band away.
        const auto [from, to] = std::minmax(pos, bar_work.pos);
        invert_band(from, to - from, bar_work.pattern);
    }
    bar_work.value = low8(rel);
    bar_work.pos = pos;
    return true;
}

void set_bar_scale(int start, int end) {
    // The low end is where the bar starts, whichever was named first.
    bar_work.low = low8(std::min(start, end));
    bar_work.steps = start == end ? 2 : std::abs(end - start) + 1;
}

/// Behind the reads: rectangle in draw_area, then slot, start, end, kind and pattern in `params`.
void define_bar(char dir) {
    store_bar_work();
    bar_current = params[0];
    bar_work = {};
    bar_work.x1 = draw_area.x1;
    bar_work.x2 = draw_area.x2;
    bar_work.y1 = draw_area.y1;
    bar_work.y2 = draw_area.y2;
    bar_work.dir = static_cast<std::uint8_t>(dir);
    set_bar_scale(params[1], params[2]);
    bar_work.kind = params[3];
    bar_work.pattern = params[4];

    const int width = bar_work.x2 - bar_work.x1 + 1, height = bar_work.y2 - bar_work.y1 + 1;
    bar_work.length = grows_sideways() ? width : height;
    if (std::min(width, height) < 2) bar_work.kind = low8(bar_work.kind & ~1);
    if (is_framed()) bar_work.length -= 2;
    if (is_pointer()) {
        if (bar_work.pattern == 0 || bar_work.pattern >= bar_work.length)
            bar_work.pattern = low8(std::max(bar_work.length / bar_work.steps, 1));
        // The pointer's far edge stops at the end of the rectangle.
        bar_work.length -= bar_work.pattern;
    }
    redraw_bar();
}

/// The value that a bar shows, 0 of none. Selects the bar.
std::uint8_t bar_value(int slot) {
    return select_bar(slot) ? low8(bar_work.low + bar_work.value) : std::uint8_t{0};
}

void answer_bar(int number, std::uint8_t value) {
    answer_packet('B', std::array{low8(number), value});
}

}  // namespace

void power_on_bars() {
    bar_current = no_bar;
    bar_send_mode = BarReport::at_release;
}

void cold_start_bars() { bar_slots = {}; }

const BarGraph& bar_in_slot(int slot) {
    if (slot == bar_current) return bar_work;
    return bar_slots[static_cast<std::size_t>(slot)];
}

std::optional<int> bar_value_at(const BarGraph& bar, int x, int y) {
    // A frame and a pointer may leave no dots to move in.
    if (bar.length == 0) return std::nullopt;
    int t = 0;
    switch (bar.dir) {
    case 'R':
        t = x - bar.x1;
        break;
    case 'L':
        t = bar.x2 - x;
        break;
    case 'U':
        t = y - bar.y1;
        break;
    default:
        t = bar.y2 - y;
        break;
    }
    // Half a step more makes the finger snap to the nearest value.
    const bool pointer = bar.kind > 1;
    if (pointer)
        t += (bar.length + bar.pattern) / bar.steps / 2 - bar.pattern / 2;
    else
        t += bar.length / (bar.steps - 1) / 2;
    return low8(bar.low + std::max(t, 0) * (bar.steps - 1) / bar.length);
}

bool bar_touch_value(int slot) {
    if (!select_bar(slot)) return false;
    const std::optional<int> value = bar_value_at(bar_work, cur_x, cur_y);
    return value && set_bar_value(*value);
}

void report_bar(int slot) { answer_bar(slot + 1, bar_value(slot)); }

void define_bar_left() { define_bar('L'); }
void define_bar_right() { define_bar('R'); }
void define_bar_up() { define_bar('O'); }
void define_bar_down() { define_bar('U'); }

void set_bar_command() {
    if (!select_bar_or_remark(params[0])) return;
    const int highest = bar_work.low + bar_work.steps - 1;
    if (params[1] < bar_work.low || params[1] > highest)
        remark(Remark::clamped, params[1], std::clamp<int>(params[1], bar_work.low, highest));
    set_bar_value(params[1]);
}

void delete_bar_command() {
    const int slot = params[0];
    if (!select_bar_or_remark(slot)) return;
    remove_touch_areas(
        [slot](const TouchArea& area) { return area.type == AreaType::bar && area.state == slot; },
        false);
    if (masked(params[1], 1) != 0) {
        draw_area = bar_rectangle();
        fill_area(link_replace, pattern_clear);
        refresh_area();
    }
    bar_work.dir = 0;
    store_bar_work();
    bar_current = no_bar;
}

void query_bar() {
    if (select_bar(params[0]))
        answer_bar(params[0] + 1, bar_value(params[0]));
    else
        answer_bar(0, 0);
}

void redraw_bar_command() {
    if (select_bar_or_remark(params[0])) redraw_bar();
}

void make_bar_touchable() {
    const std::uint8_t slot = params[0];
    if (!select_bar_or_remark(slot)) return;
    TouchArea& area = new_touch_area();
    area.type = AreaType::bar;
    area.state = slot;
    set_rectangle(area, bar_rectangle());
    add_touch_area();
}

void set_bar_report() {
    const int mode = masked(params[0], 3);
    bar_send_mode = mode == 3 ? BarReport::never : static_cast<BarReport>(mode);
}

}  // namespace orvanel
