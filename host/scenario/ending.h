// ending.h: the end of a scenario, which whatever acts in it may bring about.

#pragma once

namespace orvanel {

/// True when no command is left, a line was wrong or the scenario was stopped. shutdown_requested
/// is set then.
bool scenario_ended();

/// Ends the scenario here, in order, as its last line does.
void end_scenario();

}  // namespace orvanel
