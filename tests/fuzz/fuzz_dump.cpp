// fuzz_dump.cpp: any bytes are an image that can be listed, checked, compared and dumped, and any
// bytes are a macro that comes back from its lines.

#include "kit/build.h"
#include "kit/check.h"
#include "kit/commands.h"
#include "kit/diff.h"
#include "kit/dump.h"
#include "kit/objects.h"
#include "kit/stream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// The input stands in the image twice: over the tables and over the data.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    const std::span input(data, std::min<std::size_t>(size, data_start));
    Bytes image(eeprom_small, erased_byte);
    std::copy(input.begin(), input.end(), image.begin() + data_start);
    const Bytes before = image;
    std::copy(input.begin(), input.end(), image.begin());
    listing_of(image);
    findings_of(image);
    difference_of(before, image);
    if (dump_of(image, "k").empty()) std::abort();
    image_from_stream(input, eeprom_small);
    const Names names;
    const Assembly assembly{&names, [](int) { return Bytes(); }};
    Bytes again;
    for (const std::string& line : lines_from(input))
        assemble_line({"", 0, line}, assembly, again);
    if (!std::equal(again.begin(), again.end(), input.begin(), input.end())) std::abort();
    return 0;
}
