#include "host/ledlib/led.h"

#include "base/bmp.h"
#include "base/unpack.h"
#include "seam/window_system.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace orvanel {

namespace {

constexpr std::uint8_t packed_strip[]{
#include "led_blob.inc"
};
constexpr std::size_t strip_file_size = 5218;

constexpr int images = 45;
constexpr int strip_width = images * led_size;
constexpr std::uint32_t clear_colour = 0x00FFFF;
constexpr std::uint32_t opaque = 0xFF000000;

using LedImage = std::array<std::uint32_t, std::size_t{led_size} * led_size>;

constinit std::vector<LedControl> lights{};
constinit std::vector<LedImage> strip{};

/// The strip is a BMP of 4 bits a pixel.
std::uint32_t strip_pixel(const Bytes& file, const BmpHead& head, int x, int y) {
    constexpr std::size_t colour_size = 4;
    const std::uint8_t pair = file[static_cast<std::size_t>(bmp_row_at(head, y) + x / 2)];
    const std::size_t index = x % 2 == 0 ? pair >> 4 : pair & 0x0F;
    const std::uint32_t colour =
        bmp_colour(file, bmp_file_head + head.head_size + index * colour_size);
    return colour == clear_colour ? 0 : opaque | colour;
}

std::vector<LedImage> cut_strip(const Bytes& file) {
    const BmpHead head = bmp_head(file);
    std::vector<LedImage> cut(images);
    for (int x = 0; x < strip_width; ++x)
        for (int y = 0; y < led_size; ++y)
            cut[static_cast<std::size_t>(x / led_size)]
               [static_cast<std::size_t>(y * led_size + x % led_size)] =
                   strip_pixel(file, head, x, y);
    return cut;
}

/// The light of a handle, nullptr for a bad one.
LedControl* light_of(int handle) {
    if (handle < 1 || handle > std::ssize(lights)) return nullptr;
    return &lights[static_cast<std::size_t>(handle - 1)];
}

int set_field(int handle, int LedControl::*field, int value) {
    LedControl* const light = light_of(handle);
    return light == nullptr ? -1 : std::exchange(light->*field, value);
}

}  // namespace

void led_init() {
    led_reset();
    const Bytes file = unpack_blob(packed_strip, strip_file_size);
    if (!file.empty()) strip = cut_strip(file);
}

void led_reset() {
    lights.clear();
    strip.clear();
}

int led_add(int window, int x, int y, int shape, int colour, int state) {
    lights.push_back({x, y, window, colour, shape, colour == led_grey ? int{led_lit} : state});
    return static_cast<int>(lights.size());
}

void led_draw(int handle) {
    const LedControl* const light = light_of(handle);
    if (light == nullptr || light->window == 0) return;
    const int image = light->shape + light->colour + light->state;
    if (image < 0 || image >= std::ssize(strip)) return;
    draw_led(light->window, {light->x, light->y}, strip[static_cast<std::size_t>(image)]);
}

void led_draw_many(std::span<const int> handles) {
    for (const int handle : handles)
        led_draw(handle);
}

int led_toggle(int handle) {
    LedControl* const light = light_of(handle);
    if (light == nullptr) return -1;
    const int former = std::exchange(light->state, 1 - light->state);
    led_draw(handle);
    return former;
}

int led_set_state(int handle, int state) {
    LedControl* const light = light_of(handle);
    if (light == nullptr) return -1;
    return std::exchange(light->state, light->colour == led_grey ? int{led_lit} : state);
}

int led_set_colour(int handle, int colour) {
    LedControl* const light = light_of(handle);
    if (light == nullptr) return -1;
    if (colour == led_grey) light->state = led_lit;
    return std::exchange(light->colour, colour);
}

int led_set_shape(int handle, int shape) { return set_field(handle, &LedControl::shape, shape); }

int led_set_window(int handle, int window) {
    return set_field(handle, &LedControl::window, window);
}

int led_set_x(int handle, int x) { return set_field(handle, &LedControl::x, x); }

int led_set_y(int handle, int y) { return set_field(handle, &LedControl::y, y); }

}  // namespace orvanel
