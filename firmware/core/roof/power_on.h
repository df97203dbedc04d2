// power_on.h: the reset cycle and the defaults of the whole firmware.

#pragma once

namespace orvanel {

/// Brings every word of the firmware to its power-on value, through each owner's own function.
/// Clears restart_requested. What survives a reset is said where each owner might have cleared it.
void power_on_defaults();

/// Brings what outlives a reset, but for the EEPROM image, to where it stands at program start,
/// through each owner's own function: for who runs one module after another. Before run_firmware.
void cold_start();

/// One reset: line speed, defaults, cleared planes, the power-on macro of reset_kind armed, the
/// tick running.
void reset_cycle();

}  // namespace orvanel
