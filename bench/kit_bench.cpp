// kit_bench.cpp: a whole kit, from its sources to image and stream.

#include "kit/build.h"
#include "kit/check.h"
#include "kit/dump.h"
#include "kit/stream.h"

#include <benchmark/benchmark.h>

#include <string>

using namespace orvanel;

namespace {

const std::string device = ORVANEL_SOURCE_DIR "/examples/device.kit";

Built build_device(benchmark::State& state) {
    Faults faults;
    Built built = build_kit(
        device, {-1, -1, -1}, [](const std::string&) {}, faults);
    if (!faults.empty()) state.SkipWithError(message_of(faults[0]).c_str());
    return built;
}

/// Six fonts, twenty pictures and forty macros, files read included.
void build_whole_kit(benchmark::State& state) {
    for (auto _ : state) {
        const Built built = build_device(state);
        Faults faults;
        benchmark::DoNotOptimize(stream_of(built.kit, built.image, faults));
    }
}
BENCHMARK(build_whole_kit)->Unit(benchmark::kMillisecond);

void check_and_dump(benchmark::State& state) {
    const Bytes image = build_device(state).image;
    if (image.empty()) return;
    for (auto _ : state) {
        benchmark::DoNotOptimize(findings_of(image));
        benchmark::DoNotOptimize(dump_of(image, "k"));
    }
}
BENCHMARK(check_and_dump)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
