// bars.h: bar graphs, up to 32. A bar shows a value on a scale, growing in one of four directions,
// as a filled bar or as a moving pointer; a change touches only the dots between the old place and
// the new one.

#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace orvanel {

struct BarGraph {
    std::int32_t pos;     // dots from the bar's start, between 0 and length
    std::int32_t length;  // usable dots in the direction of growth, -1 at least
    std::int32_t x1, x2;  // outer rectangle, dots
    std::uint8_t y1, y2;  // dots
    std::uint8_t dir;   // 'L', 'R', 'O' or 'U': to the left, to the right, upward, downward; 0: no
                        // bar
    std::uint8_t kind;  // bit 0: a frame of one dot; above 1: a pointer
    std::uint8_t pattern;  // bar: fill pattern; pointer: its width in dots
    std::uint8_t low;      // lowest value of the scale
    std::int32_t steps;    // values of the scale, 2..256
    std::uint8_t value;    // less `low`, 0..steps - 1
};

/// Bars outlive a reset as their slots last held them: the one in work may hold newer values, and
/// these are lost. Zero at program start.
extern std::array<BarGraph, 32> bar_slots;

/// The bar in work and its slot, -1 for none.
extern BarGraph bar_work;
extern std::int32_t bar_current;

/// When a touched bar tells its value. The value 3, too, is never.
enum class BarReport : std::uint8_t { never, at_release, each_change };
extern BarReport bar_send_mode;

/// The bar of slot 0..31 as it stands, in work or not. Changes nothing.
const BarGraph& bar_in_slot(int slot);

/// The value that a finger on dot x, y of the glass gives a bar; none if it has no dots to move in.
std::optional<int> bar_value_at(const BarGraph& bar, int x, int y);

/// Moves the bar of `slot` 0..31 to the finger. True if that changed it; false for an empty slot.
/// Makes the slot the one in work.
bool bar_touch_value(int slot);

/// Answers with the bar's number and value, 0 as its value for an empty slot. Makes the slot the
/// one in work.
void report_bar(int slot);

/// Power-on: no bar in work, report at release.
void power_on_bars();

/// Program start: no bars.
void cold_start_bars();

// Handlers of group B, and of group A for bars.
void define_bar_left();
void define_bar_right();
void define_bar_up();
void define_bar_down();
void set_bar_command();
void delete_bar_command();
void query_bar();
void redraw_bar_command();
void make_bar_touchable();
void set_bar_report();

}  // namespace orvanel
