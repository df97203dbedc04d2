// picture.h: pictures from the command stream, from the EEPROM image and from the clipboard. The
// format stands in docs/reference/formats.md.

#pragma once

#include "firmware/raster/blit.h"

#include <cstdint>

namespace orvanel {

/// How pictures are drawn; power-on: zoom 1 x 1, link mode 4, rotation 0.
extern TextStyle bitmap_style;

/// The flash attribute of pictures, 0..3; 3 acts as 0.
extern std::uint8_t bitmap_flash;

enum class PictureSource : std::uint8_t {
    clipboard = 2,  // the main half of the clipboard slot
    eeprom = 4,     // picture n of the image's table
    stream = 8,     // width, height and rows by read_byte, raw
};

/// Draws a picture with its top left corner at x1, y1 of draw_area and refreshes its clipped box,
/// which stays in draw_area. A missing or an empty picture draws and refreshes nothing. The
/// stream's bytes are taken whole whatever fits on the glass.
void draw_picture(PictureSource source, std::uint8_t n);

/// What draw_key_picture found.
enum class KeyPicture : std::uint8_t { missing, single_image, two_images };

/// Draws EEPROM picture n with its top left corner at x1, y1 of draw_area under link mode `mode`,
/// unzoomed, without flashing, and refreshes draw_area, whether or not it found one. A picture of
/// two images shows its first; under mode 3 both, which turns a display of one into the other.
/// An empty picture counts as missing.
KeyPicture draw_key_picture(std::uint8_t n, std::uint8_t mode);

/// Power-on of style and flash attribute.
void power_on_pictures();

// Handlers of group U.
void picture_from_stream();
void picture_from_eeprom();
void picture_from_clipboard();
void hardcopy();
void set_picture_flash();
void set_picture_link();
void set_picture_rotation();
void set_picture_zoom();

}  // namespace orvanel
