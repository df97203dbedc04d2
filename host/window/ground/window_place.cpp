#include "host/window/ground/window_place.h"

#include "host/program/settings.h"

#include <algorithm>
#include <cstdint>

namespace orvanel {

PixelPoint brought_back(PixelPoint at, int width, int height, std::span<const PixelRect> screens) {
    constexpr int from_left = 100;
    constexpr int from_top = 60;
    const auto shows_on = [at, width, height](const PixelRect& screen) {
        return at.x < screen.right && at.y < screen.bottom &&
               std::int64_t{at.x} + width > screen.left && std::int64_t{at.y} + height > screen.top;
    };
    if (std::ranges::any_of(screens, shows_on)) return at;
    return {screens.front().left + from_left, screens.front().top + from_top};
}

void window_moved(int x, int y) {
    const bool outside = x < 0 || y < 0;
    window_x = outside ? 0 : x;
    window_y = outside ? 0 : y;
}

}  // namespace orvanel
