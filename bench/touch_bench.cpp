// touch_bench.cpp: a finger on a full table of keys, beside the plain inversion of the same dots.

#include "firmware/raster/area_fill.h"
#include "firmware/raster/planes.h"
#include "firmware/raster/refresh.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/finger.h"
#include "firmware/touch/tracking.h"
#include "link/ground/pipes.h"
#include "tests/support/module.h"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace orvanel {
namespace {

/// 80 keys without border and code of 20 x 12 dots, 10 to a row.
void define_keys() {
    std::string text = "#AE0,";
    for (int n = 0; n < max_touch_areas; ++n) {
        const int x = n % 10 * 24, y = n / 10 * 16;
        text += "#AT";
        for (const int number : {x, y, x + 19, y + 11, 0, 0})
            text += std::to_string(number) + ',';
        text += '\r';
    }
    fresh_module();
    run_stream(std::vector<std::uint8_t>{text.begin(), text.end()});
}

/// The key in the first row of the table is the last one that the search looks at.
void touch_last_of_80(benchmark::State& state) {
    define_keys();
    for (auto _ : state) {
        put_finger(10, 6);
        poll_touch();
        lift_finger();
        poll_touch();
        benchmark::ClobberMemory();
    }
}
BENCHMARK(touch_last_of_80);

void touch_last_of_80_peer(benchmark::State& state) {
    define_keys();
    select_graphics_planes();
    for (auto _ : state) {
        for (int i = 0; i < 2; ++i) {
            draw_area = {0, 0, 19, 11};
            fill_area(link_invert, 1);
            refresh_area();
            benchmark::ClobberMemory();
        }
    }
}
BENCHMARK(touch_last_of_80_peer)->Name("touch_last_of_80/peer");

}  // namespace
}  // namespace orvanel
