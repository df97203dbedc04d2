// fuzz_kit.cpp: any text is a kit source, or is said to be none.

#include "kit/build.h"
#include "kit/stream.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Files that the source names are looked for in a folder that isn't there.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    const std::string text(data, data + size);
    Faults faults;
    const Built built = build_text(
        "no/folder/f.kit", text, {-1, -1, -1}, [](const std::string&) {}, faults);
    if (!faults.empty()) return 0;
    const Bytes stream = stream_of(built.kit, built.image, faults);
    // What stands around the blocks may program anything at all.
    const StreamPlan& plan = built.kit.stream;
    if (!faults.empty() || !plan.before.empty() || !plan.after_block.empty() || !plan.after.empty())
        return 0;
    if (image_from_stream(stream, built.kit.memory) != built.image) std::abort();
    return 0;
}
