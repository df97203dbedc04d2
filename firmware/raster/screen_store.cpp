#include "firmware/raster/screen_store.h"

#include "base/bytes.h"
#include "firmware/raster/area_fill.h"
#include "firmware/raster/blit.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"
#include "firmware/raster/rows.h"

#include <cstring>
#include <span>

namespace orvanel {

void store_area(int slot) {
    ScreenStore& store = store_slots[static_cast<std::size_t>(slot)];
    store.width = draw_area.x2 - draw_area.x1 + 1;
    store.height = is_empty(draw_area) ? std::uint8_t{0} : low8(draw_area.y2 - draw_area.y1 + 1);
    store.x = draw_area.x1;
    store.y = draw_area.y1;

    const std::span<std::uint8_t> buffer{store.buffer};
    std::uint8_t* plane = work_plane;
    pack_area(buffer.first<plane_bytes>());
    work_plane = flash_plane_of(plane);
    pack_area(buffer.last<plane_bytes>());
    work_plane = plane;
    if (clipboard_view) refresh_all();
}

void restore_area(int slot) {
    const ScreenStore& store = store_slots[static_cast<std::size_t>(slot)];
    if (store.height == 0) return;
    picture_width = store.width;
    picture_height = store.height;
    blit_zoom_x = 1;
    blit_zoom_y = 1;
    both_planes = false;
    blit_link = link_replace;
    prepare_blit();

    const std::span<const std::uint8_t> buffer{store.buffer};
    std::uint8_t* plane = work_plane;
    blit(buffer.first<plane_bytes>());
    work_plane = flash_plane_of(plane);
    blit(buffer.last<plane_bytes>());
    work_plane = plane;
    refresh_area();
}

void move_area(int target_x, int target_y) {
    if (is_empty(draw_area)) return;
    const DrawArea source = draw_area;
    picture_width = source.x2 - source.x1 + 1;
    picture_height = low8(source.y2 - source.y1 + 1);
    // Rows of the full width lie one after the other and move as one block, as a scroll does.
    const bool whole_rows = picture_width == screen_width && target_x == 0 && !both_planes;
    if (!whole_rows) pack_area(staging_buffer);

    draw_area.x1 = target_x;
    draw_area.y1 = low8(target_y);
    blit_zoom_x = 1;
    blit_zoom_y = 1;
    blit_link = link_replace;
    prepare_blit();
    if (whole_rows)
        std::memmove(work_plane + plane_index(0, draw_area.y1),
                     work_plane + plane_index(0, source.y1), plane_index(0, blit_height));
    else
        blit(staging_buffer);
}

void store_display() {
    draw_area = whole_screen;
    store_area(clipboard_slot);
}

void store_rectangle() { store_area(clipboard_slot); }

void paste_at_point() { restore_area(clipboard_slot); }

void paste_in_place() {
    const ScreenStore& clipboard = store_slots[clipboard_slot];
    draw_area.x1 = clipboard.x;
    draw_area.y1 = clipboard.y;
    restore_area(clipboard_slot);
}

}  // namespace orvanel
