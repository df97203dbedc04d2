// codes.h: what the code of an area or of a menu row does: it starts a macro, or is answered to the
// host.

#pragma once

#include <cstdint>

namespace orvanel {

/// Starts macro `code` of a table, which ends an automatic one. False if there is none to start.
bool start_macro_by_touch(std::uint16_t table, std::uint8_t code);

/// Starts the touch macro `code`, which ends an automatic macro; sends the code as an answer if
/// there is none.
void fire_touch_code(std::uint8_t code);

}  // namespace orvanel
