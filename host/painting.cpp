#include "host/painting.h"

#include "firmware/raster/refresh.h"
#include "host/settings.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>

namespace orvanel {

namespace {

constexpr std::uint32_t light_pixel = 0xFFFFFFFF;
constexpr std::uint32_t dark_pixel = 0xFF000000;

/// Columns of dots, `end` exclusive.
struct DotSpan {
    int begin, end;
};

/// The dots of one row in `span` as pixels, `zoom` pixels for each.
void expand_row(const std::array<std::atomic<std::uint64_t>, 4>& row, DotSpan span, int zoom,
                std::uint32_t* pixel) {
    std::uint64_t bits = 0;  // the next dot is the top bit
    for (int x = span.begin; x < span.end; ++x) {
        if (x == span.begin || x % 64 == 0)
            bits = row[static_cast<std::size_t>(x / 64)].load(std::memory_order_relaxed) << x % 64;
        const std::uint32_t value = (bits >> 63) != 0 ? dark_pixel : light_pixel;
        bits <<= 1;
        for (int i = 0; i < zoom; ++i)
            *pixel++ = value;
    }
}

}  // namespace

int window_width() { return screen_width * view_zoom; }

int window_height() { return screen_height * view_zoom; }

void compose_window(std::span<std::uint32_t> frame, PixelRect rect) {
    const int z = view_zoom;
    const DotSpan columns{std::max(rect.left, 0) / z,
                          (std::min(rect.right, window_width()) + z - 1) / z};
    const DotSpan rows{std::max(rect.top, 0) / z,
                       (std::min(rect.bottom, window_height()) + z - 1) / z};
    if (columns.begin >= columns.end) return;
    const UprightImage& image = flash_phase.load() != 0 ? lcd_image_flash : lcd_image;
    const auto stride = static_cast<std::size_t>(window_width());
    const auto left = static_cast<std::size_t>(columns.begin * z);
    const auto width = static_cast<std::size_t>((columns.end - columns.begin) * z);
    for (int y = rows.begin; y < rows.end; ++y) {
        std::uint32_t* first = &frame[static_cast<std::size_t>(y * z) * stride + left];
        expand_row(image[static_cast<std::size_t>(last_y - y)], columns, z, first);
        for (int i = 1; i < z; ++i)
            std::copy_n(first, width, first + static_cast<std::size_t>(i) * stride);
    }
}

}  // namespace orvanel
