// fuzz_import.cpp: any file is a picture that fits the glass and the command for it, is refused
// with one message, or is no picture.

#include "firmware/core/ground/draw_area.h"
#include "firmware/raster/blit.h"
#include "host/import/picture_import.h"
#include "tests/support/fake_platform.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    fresh_platform();
    const std::uint8_t corner = size > 0 ? data[size - 1] : std::uint8_t{0};
    const int length = picture_convert({data, size}, corner, corner);
    if (fake_platform.messages.size() != (length == 0 ? 1U : 0U)) std::abort();
    if (length <= 0) return 0;
    const auto command = picture_command();
    const int w = command[5];
    const int h = command[6];
    if (length != 7 + stride_of(w) * h) std::abort();
    if (w > screen_width || h > screen_height) std::abort();
    if (w > 0 && h > 0 && (command[3] + w > screen_width || command[4] + h > screen_height))
        std::abort();
    return 0;
}
