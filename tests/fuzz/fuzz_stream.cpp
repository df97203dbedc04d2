// fuzz_stream.cpp: any bytes whatsoever are a legal command stream.

#include "firmware/core/requests.h"
#include "firmware/raster/refresh.h"
#include "firmware/store/eeprom.h"
#include "firmware/store/timers.h"
#include "tests/support/fake_platform.h"
#include "tests/support/module.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace orvanel {
namespace {

/// A font of 3 x 5 dots with wide and missing characters, where the module looks for font 5: so
/// strings draw from the first byte on.
std::vector<std::uint8_t> image_with_font() {
    constexpr std::uint8_t first = '0', last = 'z', height = 5;
    constexpr std::size_t start = 0x0E30, codes = last - first + 1;
    std::vector<std::uint8_t> image(start, 0xFF);
    image[2 * 5] = start & 0xFF;
    image[2 * 5 + 1] = start >> 8;
    constexpr std::size_t bits = 16 + 3 * codes;
    const std::vector<std::uint8_t> header{'F',         'H',       '7', 0, first, last, 3, height,
                                           bits & 0xFF, bits >> 8, 2,   0, 0,     0,    0, 0};
    image.insert(image.end(), header.begin(), header.end());
    for (std::size_t i = 0; i < codes; ++i) {
        const auto width = static_cast<std::uint8_t>(i % 7 == 0 ? 0 : i % 11 == 0 ? 255 : i % 20);
        image.insert(image.end(), {width, static_cast<std::uint8_t>(i), 0});
    }
    image.resize(image.size() + 400, 0xA5);
    return image;
}

/// Words that index or count stay within their ranges.
void check_tables() {
    if (flash_phase > 1 || flash_period > 15) std::abort();
    if (draw_area.x1 < 0 || draw_area.x1 > screen_width) std::abort();
}

}  // namespace
}  // namespace orvanel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    static const std::vector<std::uint8_t> image = image_with_font();
    fresh_module();
    eeprom_reset_to(eeprom_small, image);
    run_stream({data, size}, 5000);
    firmware_tick();
    check_tables();
    return 0;
}
