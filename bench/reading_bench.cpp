// reading_bench.cpp: a look at the glass, with the built-in font and six in the image, beside the
// plain way: the text drawn in each look and held against each place, to the first dot that
// differs.

#include "firmware/raster/refresh.h"
#include "firmware/store/ground/eeprom.h"
#include "host/reading/read.h"
#include "kit/build.h"
#include "tests/support/module.h"

#include <benchmark/benchmark.h>

#include <string>
#include <string_view>
#include <vector>

namespace orvanel {
namespace {

std::vector<std::uint8_t> bytes_of(std::string_view text) { return {text.begin(), text.end()}; }

/// A page with texts in every font, keys, a frame, a bar and the terminal.
constexpr std::string_view page =
    "Terminal text\r\n"
    "#ZF1,#ZL4,20,SET POINT AND ACTUAL VALUE\n#ZF2,#ZL4,30,Channel 3\n#ZF3,#ZL120,20,Heating\n"
    "#ZF4,#ZL120,40,Pump on\n#ZF5,#ZL4,44,Temperature 22.5 C\n#ZF0,#ZZ2,2,#ZL4,62,Zone 4\n#ZZ1,1,"
    "#AF5,#AE7,#AT4,90,60,120,65,97,Start\n#AT70,90,126,120,66,98,Stop\n#GR2,16,237,86,"
    "#BR1,140,95,230,110,0,100,1,2\n#BA1,60,#ZF1,#ZW1,#ZL228,84,UPWARD\n#ZW0,";

/// False if there is no glass to look at.
bool show_page(benchmark::State& state, DotRows& glass) {
    Faults faults;
    const Built built = build_kit(
        ORVANEL_SOURCE_DIR "/data/demo/demo.kit", {-1, -1, -1}, [](const std::string&) {}, faults);
    fresh_module();
    eeprom_reset_to(eeprom_small, built.image);
    // The power-on macro would play the demo over the page: without a table there is none.
    run_stream(bytes_of(page));
    if (module_fonts().size() != 7) state.SkipWithError("the demo's kit has no six fonts");
    BitPlane plane{};
    for (int y = 0; y < screen_height; ++y)
        for (int x = 0; x < screen_width; ++x)
            plane_put(plane.data(), x, y, image_dot(lcd_image, x, y));
    glass = rows_of(plane);
    return module_fonts().size() == 7;
}

constexpr std::string_view shown = "Temperature", not_shown = "Thermometer";

void find_one(benchmark::State& state, std::string_view text) {
    DotRows glass{};
    if (!show_page(state, glass)) return;
    const auto codes = bytes_of(text);
    if (find_text(glass, codes, whole_screen).empty() != (text == not_shown))
        state.SkipWithError("the page is not as it should be");
    for (auto _ : state)
        benchmark::DoNotOptimize(find_text(glass, codes, whole_screen));
}
void find_shown(benchmark::State& state) { find_one(state, shown); }
void find_not_shown(benchmark::State& state) { find_one(state, not_shown); }
BENCHMARK(find_shown)->Unit(benchmark::kMillisecond);
BENCHMARK(find_not_shown)->Unit(benchmark::kMillisecond);

bool plain_match(const DotRows& glass, const DrawnText& text, int left, int top, bool inverted) {
    for (int y = 0; y < text.height; ++y)
        for (int x = 0; x < text.width; ++x)
            if ((dot_at(glass[static_cast<std::size_t>(top + y)], left + x) != inverted) !=
                dot_at(text.rows[static_cast<std::size_t>(y)], x))
                return false;
    return true;
}

void find_not_shown_peer(benchmark::State& state) {
    DotRows glass{};
    if (!show_page(state, glass)) return;
    const auto codes = bytes_of(not_shown);
    for (auto _ : state) {
        int found = 0;
        for (const FontRef& font : module_fonts())
            for (int i = 0; i < 64; ++i) {
                const TextLook look{font.id, static_cast<std::uint8_t>(1 + i % 4),
                                    static_cast<std::uint8_t>(1 + i / 4 % 4),
                                    static_cast<std::uint8_t>(i / 16 % 2), i / 32 != 0};
                const DrawnText text = draw_text(font, look, codes);
                if (text.width == 0) continue;
                for (int y = 0; y + text.height <= screen_height; ++y)
                    for (int x = 0; x + text.width <= screen_width; ++x)
                        found += plain_match(glass, text, x, y, look.inverted);
            }
        benchmark::DoNotOptimize(found);
    }
}
BENCHMARK(find_not_shown_peer)->Name("find_not_shown/peer")->Unit(benchmark::kMillisecond);

void read_all(benchmark::State& state) {
    DotRows glass{};
    if (!show_page(state, glass)) return;
    for (auto _ : state)
        benchmark::DoNotOptimize(read_texts(glass));
    state.counters["texts"] = static_cast<double>(read_texts(glass).size());
}
BENCHMARK(read_all)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace orvanel
