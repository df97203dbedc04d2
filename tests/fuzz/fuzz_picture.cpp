// fuzz_picture.cpp: any bytes are a picture file, or are said to be none.

#include "kit/dots.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    GrayPicture picture;
    if (!decode_picture({data, size}, picture).empty()) return 0;
    if (std::ssize(picture.light) != picture.width * picture.height) std::abort();
    const Dots dots = by_threshold(picture, 50);
    if (by_dither(picture).rows.size() != dots.rows.size()) std::abort();
    if (by_threshold(gray_of(dots), 50).rows != dots.rows) std::abort();
    return 0;
}
