// interpreter_bench.cpp: bytes put straight into the pipe, through reader, dispatch, drawing and
// refresh; beside a terminal library that eats plain text and draws no dots.

#include "firmware/store/ground/eeprom.h"
#include "tests/support/module.h"

#include <benchmark/benchmark.h>
#include <vterm.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace orvanel {
namespace {

constexpr std::size_t stream_bytes = 64 * 1024;

std::vector<std::uint8_t> repeated(const std::string& piece) {
    std::vector<std::uint8_t> stream;
    while (stream.size() < stream_bytes)
        stream.insert(stream.end(), piece.begin(), piece.end());
    return stream;
}

/// What a device screen sends: values redrawn in place, bars, lines, a little text.
std::vector<std::uint8_t> mixed_stream() {
    std::string piece = "\x1BZF";
    piece += '\0';
    for (int i = 0; i < 64; ++i) {
        const auto x = static_cast<char>(8 + 3 * i), y = static_cast<char>(4 + i);
        piece += std::string("\x1BGD") + x + y + 'd' + '2';
        piece += std::string("\x1BRL") + '\x0A' + y + '\x28' + static_cast<char>(y + 7);
        piece += std::string("\x1BZL") + '\x0A' + y + "12." + std::to_string(i) + '\0';
        piece += std::string("\x1BRM") + 'd' + '\x50' + x + 'Z' + '\4';
        piece += std::string("\x1BGP") + x + y;
        piece += "#RI20,100,60,110,#GR18,98,62,112,";
        piece += "ok ";
    }
    return repeated(piece);
}

std::vector<std::uint8_t> plain_text() {
    return repeated("The quick brown fox jumps over the lazy dog, again and again.\r\n");
}

void run(benchmark::State& state, const std::vector<std::uint8_t>& stream) {
    fresh_module();
    for (auto _ : state)
        run_stream(stream);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * stream.size()));
}

void interpreter_mixed(benchmark::State& state) { run(state, mixed_stream()); }
BENCHMARK(interpreter_mixed);

void interpreter_plain_text(benchmark::State& state) { run(state, plain_text()); }
BENCHMARK(interpreter_plain_text);

/// Commands out of the image: macro 0 draws points and starts itself again by a tail call.
void interpreter_macros(benchmark::State& state) {
    constexpr std::size_t commands = 1000;
    std::vector<std::uint8_t> image(data_start, erased_byte);
    for (std::size_t i = 0; i < commands; ++i)
        image.insert(image.end(), {0x1B, 'G', 'P', static_cast<std::uint8_t>(i % 240),
                                   static_cast<std::uint8_t>(i % 128)});
    const std::array<std::size_t, 2> record{data_start, 5 * commands};
    for (std::size_t i = 0; i < 4; ++i)
        image[normal_macro_table + i] = static_cast<std::uint8_t>(record[i / 2] >> 8 * (i % 2));
    fresh_module();
    eeprom_reset_to(eeprom_small, image);
    const std::vector<std::uint8_t> stream = repeated(std::string("\x1BMN\0", 4));
    const std::span<const std::uint8_t> starts = std::span(stream).first(400);
    for (auto _ : state)
        run_stream(starts);
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * commands * 100));
}
BENCHMARK(interpreter_macros);

void peer_terminal_plain_text(benchmark::State& state) {
    const std::vector<std::uint8_t> text = plain_text();
    VTerm* terminal = vterm_new(16, 30);
    vterm_screen_reset(vterm_obtain_screen(terminal), 1);
    for (auto _ : state)
        vterm_input_write(terminal, reinterpret_cast<const char*>(text.data()), text.size());
    vterm_free(terminal);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}
BENCHMARK(peer_terminal_plain_text);

}  // namespace
}  // namespace orvanel
