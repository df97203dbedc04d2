// blit.h: packed pictures into the planes, stretched, clipped, combined dot by dot. Every character
// of every font and every picture goes this way.

#pragma once

#include "firmware/core/language/eeprom_layout.h"

#include <array>
#include <cstdint>
#include <span>

namespace orvanel {

/// Link modes of the blit beside those of area_fill.h.
constexpr std::uint8_t link_none = 0;       // the dot stays
constexpr std::uint8_t link_all_clear = 6;  // 0, whatever the picture
constexpr std::uint8_t link_all_set = 7;    // 1, whatever the picture

/// How text and pictures flash; any other value acts as flash_none.
constexpr std::uint8_t flash_none = 0;
constexpr std::uint8_t flash_blank = 1;    // the flash plane gets no picture
constexpr std::uint8_t flash_inverse = 2;  // the flash plane gets the opposite

/// How a string or a picture is drawn.
struct TextStyle {
    std::uint8_t zoom_x;    // 1..4, along the text direction
    std::uint8_t zoom_y;    // 1..4, across it
    std::uint8_t link;      // 0..7
    std::uint8_t reserved;  // 0, never read
    std::uint8_t rotation;  // 0..3, turns of 90 degrees anticlockwise
};

/// The blit's operands, scratch: every user sets what it needs.
extern std::int32_t picture_width;    // dots of a packed row
extern std::uint8_t picture_height;   // rows
extern std::uint8_t blit_zoom_x;      // 1..4
extern std::uint8_t blit_zoom_y;      // 1 or more
extern std::uint8_t blit_link;        // for work_plane
extern std::uint8_t blit_flash_link;  // for its flash plane
extern std::uint8_t flash_attr;       // flash_none, flash_blank or flash_inverse
extern std::int32_t blit_width;       // dots drawn a row, after clipping
extern std::uint8_t blit_height;      // rows drawn, after clipping

/// The packed picture that a blit draws; as large as the largest glyph, 255 x 255 dots.
extern std::array<std::uint8_t, 255 * 32> staging_buffer;

/// The link mode for the flash plane that makes a picture under `link` flash as `attr` says.
std::uint8_t flash_link_of(std::uint8_t link, std::uint8_t attr);

/// Sets x2, y2 of draw_area, blit_width, blit_height and blit_flash_link from x1, y1 (on the
/// glass), the picture's size, the zooms, blit_link and flash_attr. Clips at the right and bottom
/// edges of the display.
void prepare_blit();

/// For callers that stay inside the display and set both links themselves: the box of w x h dots
/// at x1, y1 of draw_area, without clipping.
void set_blit_area(int w, int h);

/// Draws the packed rows with the upper left dot at x1, y1 of draw_area, where prepare_blit or
/// set_blit_area has set the clip. `rows` holds at least the rows that the clip shows, each
/// stride_of(picture_width) bytes, top row first. Refreshes nothing.
void blit(std::span<const std::uint8_t> rows);

/// Puts a picture of picture_width x picture_height dots from packed `rows` into staging_buffer,
/// turned by `rotation` (0..3, anticlockwise). picture_width and picture_height become the
/// result's; the height of a result turned by 90 or 270 degrees is cut at 128 rows. `rows` lies
/// elsewhere and holds picture_height * stride_of(picture_width) bytes, at most the size of
/// staging_buffer.
void stage_picture(std::span<const std::uint8_t> rows, std::uint8_t rotation);

/// Writes the dots of draw_area of work_plane to `target` as packed rows aligned to the area's
/// left edge; `target` holds them all.
void pack_area(std::span<std::uint8_t> target);

}  // namespace orvanel
