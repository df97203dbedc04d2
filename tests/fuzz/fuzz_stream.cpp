// fuzz_stream.cpp: any bytes whatsoever are a legal command stream.

#include "firmware/core/ground/requests.h"
#include "firmware/raster/refresh.h"
#include "firmware/store/ground/eeprom.h"
#include "firmware/store/roof/timers.h"
#include "tests/support/fake_platform.h"
#include "tests/support/font_image.h"
#include "tests/support/module.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace orvanel {
namespace {

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
