#include "host/skin/skin.h"

#include "base/bytes.h"
#include "base/unpack.h"

#include <utility>

namespace orvanel {

constinit SkinImage skin_image{};
constinit SkinImage skin_image_rot{};
constinit Display lcd_dib{};
constinit Display lcd_dib_flash{};
constinit Display lcd_dib_rot{};
constinit Display lcd_dib_rot_flash{};
constinit int key_index = 0;
constinit int band_index = 0;
constinit std::uint32_t key_colour_framed = 0;
constinit std::uint32_t key_colour_cut = 0;

namespace {

constexpr std::uint8_t packed_skin[]{
#include "skin_blob.inc"
};
constexpr std::size_t skin_blob_size = 192632;

/// Where the glass is in the picture, in pixels, rows and column inclusive.
struct Glass {
    int glass_top, glass_bottom, glass_left;
    int band_index;  // of the first pixel above the glass, -1 if the glass reaches the edge
};

Glass find_glass(const Dib& skin) {
    const int x = dib_columns(skin) / 2;
    const int middle = dib_rows(skin) / 2;
    const std::uint8_t glass_index = dib_get(skin, x, middle);
    Glass glass{middle, middle, x, -1};
    while (glass.glass_top > 0 && dib_get(skin, x, glass.glass_top - 1) == glass_index)
        --glass.glass_top;
    if (glass.glass_top > 0) glass.band_index = dib_get(skin, x, glass.glass_top - 1);
    while (glass.glass_bottom + 1 < dib_rows(skin) &&
           dib_get(skin, x, glass.glass_bottom + 1) == glass_index)
        ++glass.glass_bottom;
    // The right edge isn't looked for: the glass is 240 dots wide.
    while (glass.glass_left > 0 &&
           dib_get(skin, glass.glass_left - 1, glass.glass_bottom) == glass_index)
        --glass.glass_left;
    return glass;
}

constexpr int glass_dots_shift = 7;  // the glass has 128 rows of dots
static_assert(screen_height == 1 << glass_dots_shift);

std::string glass_fault(const Dib& skin, const Glass& glass) {
    const int rows = glass.glass_bottom - glass.glass_top + 1;
    const int scale = rows >> glass_dots_shift;
    if (scale == 0)
        return "its glass is " + std::to_string(rows) + " pixels high, and less than " +
               std::to_string(screen_height) + " show no dots";
    if (glass.band_index < 0) return "its glass reaches the upper edge, there is no surround";
    if (glass.glass_left / scale + screen_width > dib_columns(skin) / scale)
        return "the display reaches beyond its right edge";
    return {};
}

void measure(SkinImage& skin, int scale) {
    const int width = dib_columns(skin) / scale;
    const int height = dib_rows(skin) / scale;
    skin.scale = static_cast<std::uint32_t>(scale);
    skin.width = static_cast<std::uint32_t>(width);
    skin.height = static_cast<std::uint32_t>(height);
    skin.area = {0, 0, width - 1, height - 1};
}

/// What the area leaves around the glass.
void set_bands(SkinImage& skin, SkinRect glass) {
    const SkinRect& all = skin.area;
    skin.band_top = {all.left, all.top, all.right, glass.top - 1};
    skin.band_bottom = {all.left, glass.bottom + 1, all.right, all.bottom};
    skin.band_left = {all.left, glass.top, glass.left - 1, glass.bottom};
    skin.band_right = {glass.right + 1, glass.top, all.right, glass.bottom};
}

void make_upright(Display& display, const UprightImage& image, SkinRect area) {
    dib_create(display, screen_width, screen_height, 2);
    display.upright = &image;
    display.area = area;
}

void make_rotated(Display& display, const RotatedImage& image, SkinRect area) {
    dib_create(display, screen_height, screen_width, 2);
    display.rotated = &image;
    display.area = area;
}

void place_glass(SkinRect upright) {
    make_upright(lcd_dib, lcd_image, upright);
    make_upright(lcd_dib_flash, lcd_image_flash, upright);
    set_bands(skin_image, upright);

    SkinRect rotated{};
    rotated.left = skin_image.area.bottom - upright.bottom;
    rotated.top = upright.left;
    rotated.right = rotated.left + last_y;
    rotated.bottom = rotated.top + last_x;
    make_rotated(lcd_dib_rot, lcd_image_rot, rotated);
    make_rotated(lcd_dib_rot_flash, lcd_image_rot_flash, rotated);
    set_bands(skin_image_rot, rotated);
}

}  // namespace

Bytes builtin_skin() { return unpack_blob(packed_skin, skin_blob_size); }

std::string skin_analyse(Bytes bmp) {
    SkinImage skin{};
    if (std::string fault = dib_attach(skin, std::move(bmp)); !fault.empty()) return "it " + fault;
    const Glass glass = find_glass(skin);
    if (std::string fault = glass_fault(skin, glass); !fault.empty()) return fault;

    key_index = dib_get(skin, 0, 0);
    const int cut_index = dib_get(skin, 1, 0);
    dib_put(skin, 1, 0, low8(key_index));
    key_colour_framed = dib_colour(skin, key_index);
    key_colour_cut = dib_colour(skin, cut_index);
    band_index = glass.band_index;

    const int scale = (glass.glass_bottom - glass.glass_top + 1) >> glass_dots_shift;
    measure(skin, scale);
    skin_image = std::move(skin);
    dib_turn(skin_image_rot, skin_image);
    measure(skin_image_rot, scale);
    const int left = glass.glass_left / scale;
    const int top = glass.glass_top / scale;
    place_glass({left, top, left + last_x, top + last_y});
    return {};
}

}  // namespace orvanel
