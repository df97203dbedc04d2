// lcd_colours.h: the colours of the glass by LCD type, polarizer and backlight, blended by the
// present level of the backlight. Main thread. docs/reference/skin.md tells the models.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvanel {

/// The colours of one glass, 0xRRGGBB, each with the backlight at 100, 50 and 0 percent.
struct LcdColours {
    std::array<std::uint32_t, 3> dot;       // a set dot
    std::array<std::uint32_t, 3> clear;     // a clear one
    std::array<std::uint32_t, 3> surround;  // the margin of the glass
};

/// The row of the table for an lcd_type (0..2), lcd_polarizer (0..1) and lcd_backlight (0..5); what
/// is outside is clamped.
const LcdColours& lcd_colours_of(int type, int polarizer, int backlight);

/// A colour at `level`, as backlight_light (firmware/core/ground/backlight.h) counts it: 0 dark,
/// backlight_level_full, else percent, above 100 as 100. Fractions are dropped.
std::uint32_t blended(const std::array<std::uint32_t, 3>& colour, std::uint8_t level);

/// Sets lcd_type, lcd_polarizer and lcd_backlight to those of skin_model, if it is a fixed one, and
/// gives the display images and the glass's surround their colours at the present level. A model
/// outside 0..custom_model does nothing. Repaints nothing.
void model_apply();

}  // namespace orvanel
