// keyboard.h: typed keys, which never reach the module: they go to the companion, as one byte each
// (host/bridge/bridge.h). Keys that the menu's shortcuts take don't come here. Main thread.

#pragma once

#include <string_view>

namespace orvanel {

/// F1 to F10, by number.
void function_key(int number);

/// A digit of the numeric keypad went down while Alt is held, with or without NumLock; the release
/// of Alt sends the number.
void alt_digit(int digit);
void alt_released();

/// A typed character as a Unicode code point. The window system doesn't pass on what it composes of
/// an Alt number itself.
void character_typed(char32_t character);

}  // namespace orvanel
