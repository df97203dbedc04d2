#include "firmware/raster/picture.h"

#include "base/bytes.h"
#include "firmware/core/ground/draw_area.h"
#include "firmware/core/ground/trace.h"
#include "firmware/core/read/read.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"
#include "firmware/raster/screen_store.h"
#include "firmware/store/ground/eeprom.h"
#include "link/ground/answers.h"
#include "link/ground/pipes.h"

#include <algorithm>
#include <array>

namespace orvanel {

constinit TextStyle bitmap_style{};
constinit std::uint8_t bitmap_flash = 0;

namespace {

/// The rows as they come, before they are turned: the largest picture that the format describes.
constinit std::array<std::uint8_t, max_picture_height * stride_of(max_picture_width)> source_rows{};

bool picture_empty() { return picture_width == 0 || picture_height == 0; }

/// Seeks picture n in the image; false if the table has none.
bool seek_picture(std::uint8_t n) {
    eeprom_seek(static_cast<std::uint16_t>(entry_at(Kind::picture, n)));
    const std::uint16_t offset = eeprom_read16();
    if (offset == no_entry) {
        remark(Remark::missing_picture, n);
        return false;
    }
    eeprom_seek(offset);
    return true;
}

/// Reads the rows of picture_width x picture_height dots whole, also those that will fall outside
/// the display, so that the stream stays in step; then stages them, turned.
void load_picture(std::uint8_t (*next)(), std::uint8_t rotation) {
    const auto size = static_cast<std::size_t>(stride_of(picture_width) * picture_height);
    std::generate_n(source_rows.begin(), size, next);
    stage_picture(std::span(source_rows).first(size), rotation);
}

void load_clipboard(std::uint8_t rotation) {
    const ScreenStore& slot = store_slots[clipboard_slot];
    picture_width = slot.width;
    picture_height = slot.height;
    const auto size = static_cast<std::size_t>(stride_of(picture_width) * picture_height);
    stage_picture(std::span(slot.buffer).first(size), rotation);
}

void read_size(std::uint8_t (*next)()) {
    picture_width = next();
    picture_height = low8(picture_rows(next()));
}

void draw_staged() {
    prepare_blit();
    if (blit_width != picture_width * blit_zoom_x || blit_height != picture_height * blit_zoom_y)
        remark(Remark::picture_cut);
    blit(staging_buffer);
}

}  // namespace

void power_on_pictures() {
    bitmap_style = {1, 1, link_replace, 0, 0};
    bitmap_flash = flash_none;
}

void draw_picture(PictureSource source, std::uint8_t n) {
    const std::uint8_t rotation = bitmap_style.rotation;
    if (source == PictureSource::clipboard) {
        load_clipboard(rotation);
    } else {
        if (source == PictureSource::eeprom && !seek_picture(n)) return;
        const auto next = source == PictureSource::stream ? read_byte : eeprom_read;
        read_size(next);
        load_picture(next, rotation);
    }
    if (picture_empty()) return;
    const bool upright = rotation % 2 == 0;
    blit_zoom_x = upright ? bitmap_style.zoom_x : bitmap_style.zoom_y;
    blit_zoom_y = upright ? bitmap_style.zoom_y : bitmap_style.zoom_x;
    flash_attr = bitmap_flash;
    blit_link = bitmap_style.link;
    draw_staged();
    refresh_area();
}

KeyPicture draw_key_picture(std::uint8_t n, std::uint8_t mode) {
    KeyPicture found = KeyPicture::missing;
    if (seek_picture(n)) {
        picture_width = eeprom_read();
        const std::uint8_t height = eeprom_read();
        const bool two = has_two_images(height);
        picture_height = low8(two ? picture_rows(height) / 2 : height);
        if (!picture_empty()) {
            found = two ? KeyPicture::two_images : KeyPicture::single_image;
            blit_zoom_x = blit_zoom_y = 1;
            flash_attr = flash_none;
            blit_link = mode;
            both_planes = true;
            load_picture(eeprom_read, 0);
            draw_staged();
            if (two && mode == link_invert) {
                // The cursor stands at the second image: two inversions turn one into the other.
                load_picture(eeprom_read, 0);
                draw_staged();
            }
        }
    }
    refresh_area();
    return found;
}

void picture_from_stream() { draw_picture(PictureSource::stream, 0); }

void picture_from_eeprom() { draw_picture(PictureSource::eeprom, params[0]); }

void picture_from_clipboard() { draw_picture(PictureSource::clipboard, 0); }

void hardcopy() {
    const int width = draw_area.x2 - draw_area.x1 + 1;
    const int height = draw_area.y2 - draw_area.y1 + 1;
    const auto size = static_cast<std::size_t>(stride_of(width) * height);
    // In the form of the command that draws it again.
    for (const int byte :
         {int{lead_in_esc}, int{'U'}, int{'L'}, draw_area.x1, int{draw_area.y1}, width, height})
        answer_byte(low8(byte));
    const auto rows = std::span(source_rows).first(size);
    pack_area(rows);
    tx_pipe_put_block(rows);
}

void set_picture_flash() { bitmap_flash = masked(params[0], 3); }

void set_picture_link() { bitmap_style.link = masked(params[0], 7); }

void set_picture_rotation() { bitmap_style.rotation = masked(params[0], 1); }

void set_picture_zoom() {
    bitmap_style.zoom_x = params[0];
    bitmap_style.zoom_y = params[1];
}

}  // namespace orvanel
