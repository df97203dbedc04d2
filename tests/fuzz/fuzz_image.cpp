// fuzz_image.cpp: any bytes whatsoever may stand in the EEPROM, under commands that reach into it.

#include "firmware/core/ground/requests.h"
#include "firmware/store/ground/eeprom.h"
#include "firmware/store/ground/macro.h"
#include "firmware/store/roof/timers.h"
#include "tests/support/fake_platform.h"
#include "tests/support/module.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// The input: size of the image, kind of the reset, length of the stream, the stream, the image.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    constexpr long max_bytes = 2000;
    if (size < 3) return 0;
    const std::span input(data, size);
    const auto rest = input.subspan(3);
    const auto stream = rest.first(std::min<std::size_t>(rest.size(), input[2]));
    fresh_module();
    eeprom_reset_to((input[0] & 1) != 0 ? eeprom_large : eeprom_small, rest.subspan(stream.size()));
    reset_kind = input[1] & 3;
    run_stream(stream, max_bytes);
    for (int i = 0; i < 2; ++i) {
        firmware_tick();
        run_stream(stream, max_bytes);
    }
    if (macro_depth > max_macro_depth) std::abort();
    return 0;
}
