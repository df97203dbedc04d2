// What composing the window's picture costs, skin and display, at each zoom: the whole of it, the
// display alone, and the 8 x 8 dots of a letter. The peer is a fill of as many pixels.

#include "firmware/raster/refresh.h"
#include "host/program/settings.h"
#include "host/skin/painting.h"
#include "host/skin/view.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

namespace orvanel {
namespace {

/// The view at a zoom, its frame, and dots on the glass as busy as dots can be.
std::vector<std::uint32_t> show(int zoom) {
    view_zoom = zoom;
    view_rotated = false;
    prepare_view();
    std::mt19937_64 random{44};
    for (auto& row : lcd_image)
        for (auto& word : row)
            word = random();
    return std::vector<std::uint32_t>(static_cast<std::size_t>(window_width()) *
                                      static_cast<std::size_t>(window_height()));
}

void compose(benchmark::State& state, PixelRect (*part)()) {
    std::vector<std::uint32_t> frame = show(static_cast<int>(state.range(0)));
    const PixelRect rect = part();
    for (auto _ : state) {
        compose_window(frame, rect);
        benchmark::DoNotOptimize(frame.data());
    }
}

PixelRect whole() { return {0, 0, window_width(), window_height()}; }
PixelRect display() { return display_pixels(0, 0, last_x, last_y); }
PixelRect letter() { return display_pixels(100, 60, 107, 67); }

void compose_whole(benchmark::State& state) { compose(state, whole); }
void compose_display(benchmark::State& state) { compose(state, display); }
void compose_letter(benchmark::State& state) { compose(state, letter); }

void fill_pixels(benchmark::State& state) {
    std::vector<std::uint32_t> frame = show(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        std::fill(frame.begin(), frame.end(), 0xFF102030);
        benchmark::DoNotOptimize(frame.data());
    }
}

BENCHMARK(compose_whole)->DenseRange(1, 3)->Arg(8)->Unit(benchmark::kMicrosecond);
BENCHMARK(fill_pixels)
    ->Name("compose_whole/peer")
    ->DenseRange(1, 3)
    ->Arg(8)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(compose_display)->DenseRange(1, 3)->Arg(8)->Unit(benchmark::kMicrosecond);
BENCHMARK(compose_letter)->DenseRange(1, 3)->Arg(8);

}  // namespace
}  // namespace orvanel

BENCHMARK_MAIN();
