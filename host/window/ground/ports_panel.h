// ports_panel.h: the panel with a light for each of the module's output lines 1 to 7, lit for a
// line at 0. Main thread.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace orvanel {

constexpr std::size_t ports_on_panel = 7;

// Where the lights are in the panel, in pixels: the left edge of the first, from each to the next,
// and the upper edge of all.
constexpr int first_light_x = 12, light_distance = 20, lights_top = 20;

/// Opens the panel at ports_x, ports_y, or closes it; nothing if it already is.
void ports_open();
void ports_close();
bool ports_opened();

/// Lights the lines whose bit is set in `bits`; nothing while the panel is closed.
void ports_show(std::uint8_t bits);

/// The user moved the panel.
void ports_moved(int x, int y);

/// Which lights are lit, the line of bit 0 first; none while the panel is closed.
std::optional<std::array<bool, ports_on_panel>> ports_lit();

}  // namespace orvanel
