// skin.h: the picture of the module around the glass. It carries neither places nor colours for the
// glass: both are found by looking at the picture itself. docs/reference/skin.md tells its form.

#pragma once

#include "host/skin/dib.h"
#include "host/skin/display.h"
#include "host/skin/skin_rect.h"

#include <cstdint>
#include <string>

namespace orvanel {

/// A bitmap of 8 bits a pixel, and what has been found in it.
struct SkinImage : Dib {
    std::uint32_t scale;          // pixels for each dot on each axis, above 0
    std::uint32_t width, height;  // in dots
    SkinRect area;                // all of it
    // The four pieces of it around the glass.
    SkinRect band_left, band_right, band_top, band_bottom;
};

/// The skin and its twin turned by 90 degrees clockwise.
extern SkinImage skin_image;
extern SkinImage skin_image_rot;

/// The display images of each flash phase, upright and turned, which show the images of
/// firmware/raster/refresh.h.
extern Display lcd_dib;
extern Display lcd_dib_flash;
extern Display lcd_dib_rot;
extern Display lcd_dib_rot_flash;

/// The palette index of the pixels outside the module, and the one of the glass's surround.
extern int key_index;
extern int band_index;

/// The colour at key_index, 0xRRGGBB, with the window's frame on and off.
extern std::uint32_t key_colour_framed;
extern std::uint32_t key_colour_cut;

/// The built-in skin, a BMP file; empty if the program's copy of it is damaged.
Bytes builtin_skin();

/// Makes the six images and the four words above from a skin in the form of docs/reference/skin.md.
/// The result is empty on success, else what is wrong with the skin; then all stays as it was.
std::string skin_analyse(Bytes bmp);

}  // namespace orvanel
