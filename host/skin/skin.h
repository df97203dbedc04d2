// skin.h: the picture of the module around the glass. It carries neither places nor colours for the
// glass: both are found by looking at the picture itself. docs/reference/skin.md tells its form.

#pragma once

#include "host/skin/dib.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvanel {

/// The skin and its twin turned by 90 degrees clockwise.
extern Dib skin_image;
extern Dib skin_image_rot;

/// The display images of each flash phase, upright and turned, which show the images of
/// firmware/raster/refresh.h. Colour 0 is that of a clear dot, colour 1 that of a set one.
extern Dib lcd_dib;
extern Dib lcd_dib_flash;
extern Dib lcd_dib_rot;
extern Dib lcd_dib_rot_flash;

/// The palette index of the pixels outside the module, and the one of the glass's surround.
extern int key_index;
extern int band_index;

/// The colour at key_index, 0xRRGGBB, with the window's frame on and off.
extern std::uint32_t key_colour_framed;
extern std::uint32_t key_colour_cut;

/// The built-in skin, a BMP file; empty if the program's copy of it is damaged.
std::vector<std::uint8_t> builtin_skin();

/// Makes the six images and the four words above from a skin in the form of docs/reference/skin.md.
/// The result is empty on success, else what is wrong with the skin; then all stays as it was.
std::string skin_analyse(std::vector<std::uint8_t> bmp);

}  // namespace orvanel
