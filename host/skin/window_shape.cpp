// The shapes of outline.h, as the window system takes them.

#include "host/skin/outline.h"
#include "host/skin/skin.h"
#include "seam/window_system.h"

namespace orvanel {

namespace {

void set_key_colour(std::uint32_t colour) {
    dib_set_colour(skin_image, key_index, colour);
    dib_set_colour(skin_image_rot, key_index, colour);
}

}  // namespace

void window_show_frame() {
    set_key_colour(key_colour_framed);
    show_window_frame();
}

void window_cut_to_skin() {
    set_key_colour(key_colour_cut);
    cut_window(skin_outline());
}

}  // namespace orvanel
