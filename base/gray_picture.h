// gray_picture.h: pictures in shades of gray, as they come out of files.

#pragma once

#include "base/bytes.h"

#include <cstdint>
#include <string>

namespace orvanel {

/// A picture, top row first.
struct GrayPicture {
    int width, height;
    Bytes light;  // width * height, 0 black to 255 white
};

/// How light a colour is to the eye.
constexpr std::uint8_t luminance(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return low8((299 * red + 587 * green + 114 * blue) / 1000);
}

/// What speaks against a picture of this size, empty for nothing. A reader asks before it looks at
/// the dots or takes memory for them; the sides are as the file has them and may be anything.
using SizeFault = std::string (*)(std::int64_t width, std::int64_t height);

}  // namespace orvanel
