// keys.h: group A: keys, switches and radio groups, draw and report areas, and the removal of
// areas.

#pragma once

#include <cstdint>

namespace orvanel {

/// The radio group of the next switch, 0 for none. 0 at program start; a reset leaves it.
extern std::uint8_t switch_group;

/// Program start: new switches are in no group.
void cold_start_keys();

/// Flips switch `index` as a press does and returns the code to fire, 0 for none. A switch of a
/// radio group that is on stays on.
std::uint8_t press_switch(int index);

// Handlers.
void define_key();
void define_picture_key();
void define_switch();
void define_picture_switch();
void define_draw_area();
void define_report_area();
void query_radio_group();
void query_switch();
void set_switches();
void invert_by_code();
void remove_by_code();
void remove_at_point();
void set_touch_border();
void set_touch_invert();
void set_switch_group();
void set_label_rotation();
void set_label_zoom();

}  // namespace orvanel
