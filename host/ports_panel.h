// ports_panel.h: the panel with a light for each of the module's output lines 1 to 7, lit for a
// line at 0. Main thread.

#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace orvanel {

/// Opens the panel at ports_x, ports_y, or closes it; nothing if it already is.
void ports_open();
void ports_close();
bool ports_opened();

/// Shows the complement of the output lines; nothing while the panel is closed.
void ports_show(std::uint8_t bits);

/// The user closed the panel by its box, moved it.
void ports_boxed();
void ports_moved(int x, int y);

/// Which lights are lit, the line of bit 0 first; none while the panel is closed.
std::optional<std::array<bool, 7>> ports_lit();

}  // namespace orvanel
