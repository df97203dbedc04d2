// halt.h: the firmware's thread stands still while the main thread looks at the module's state. It
// does so wherever it gives time away: in a sleep, and between two bytes.

#pragma once

namespace orvanel {

/// What halt_module and resume_module (host/scenario/world.h) come to in real time. Main thread; it
/// serves the firmware's requests until that stands, since the firmware may wait for a paint.
void halt_firmware();
void resume_firmware();

/// Around each sleep of the firmware's thread, and at each byte. The sleep ends no sooner than the
/// halt that has come meanwhile.
void firmware_sleeps();
void firmware_wakes();
void firmware_took_byte();

}  // namespace orvanel
