// fuzz_bdf.cpp: any text is a BDF font, or is said to be none.

#include "kit/bdf.h"
#include "kit/fault.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    const std::string text(data, data + size);
    try {
        Font font = read_bdf("f.bdf", text, Codes().set(), Encoding::stated);
        trim_rows(font);
        std::string fault;
        const Bytes bytes = font_bytes(font, fault);
        if (bytes.empty()) return 0;
        // What was made is a font, and the same out of its own BDF.
        Font read, again = read_bdf("f", write_bdf(font, "f"), Codes().set(), Encoding::stated);
        std::size_t length = 0;
        if (!read_font_bytes(bytes, read, length)) std::abort();
        if (font_bytes(again, fault) != bytes) std::abort();
    } catch (const Fault&) {
        return 0;
    }
    return 0;
}
