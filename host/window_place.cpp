#include "host/window_place.h"

#include "host/settings.h"

#include <algorithm>
#include <cstdint>

namespace orvanel {

void bring_window_back(std::span<const PixelRect> screens, int width, int height) {
    constexpr int from_left = 100;
    constexpr int from_top = 60;
    const auto shows_on = [width, height](const PixelRect& screen) {
        return window_x < screen.right && window_y < screen.bottom &&
               std::int64_t{window_x} + width > screen.left &&
               std::int64_t{window_y} + height > screen.top;
    };
    if (std::ranges::any_of(screens, shows_on)) return;
    window_x = screens.front().left + from_left;
    window_y = screens.front().top + from_top;
}

void window_moved(int x, int y) {
    const bool outside = x < 0 || y < 0;
    window_x = outside ? 0 : x;
    window_y = outside ? 0 : y;
}

}  // namespace orvanel
