#include "host/skin/display.h"

#include <cstddef>

namespace orvanel {

std::span<const std::atomic<std::uint64_t>> dot_row(const Display& display, int y) {
    const auto stored = static_cast<std::size_t>(dib_rows(display) - 1 - y);
    if (display.upright != nullptr) return (*display.upright)[stored];
    return (*display.rotated)[stored];
}

Bytes dib_block(const Display& display) {
    Bytes block = display.block;
    for (int y = 0; y < dib_rows(display); ++y) {
        const auto words = dot_row(display, y);
        const std::size_t row = dib_row_at(display, y);
        for (std::size_t i = 0; i < display.stride; ++i)
            block[row + i] = low8(static_cast<std::int64_t>(
                words[i / 8].load(std::memory_order_relaxed) >> (56 - i % 8 * 8)));
    }
    return block;
}

}  // namespace orvanel
