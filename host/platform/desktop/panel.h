// panel.h: the tool window of the output ports, which window_system.h opens and closes.

#pragma once

namespace orvanel {

/// Tells the rules where the panel stands, if it is open. At the program's end; before, its closing
/// does.
void keep_panel_place();

}  // namespace orvanel
