// font_image.h: an EEPROM image with which strings draw from the first byte on.

#pragma once

#include "firmware/core/language/eeprom_layout.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvanel {

/// A font of 3 x 5 dots with wide and missing characters, where the module looks for font 5; the
/// tables before it are blank.
inline std::vector<std::uint8_t> image_with_font() {
    constexpr std::uint8_t first = '0', last = 'z', height = 5;
    constexpr std::size_t start = data_start, codes = last - first + 1;
    std::vector<std::uint8_t> image(start, erased_byte);
    image[entry_at(Kind::font, 5)] = start & 0xFF;
    image[entry_at(Kind::font, 5) + 1] = start >> 8;
    constexpr std::size_t bits = font_head_size + glyph_entry_size * codes;
    const std::vector<std::uint8_t> header{font_magic[0],
                                           font_magic[1],
                                           font_magic[2],
                                           0,
                                           first,
                                           last,
                                           3,
                                           height,
                                           bits & 0xFF,
                                           bits >> 8,
                                           2,
                                           0,
                                           0,
                                           0,
                                           0,
                                           0};
    image.insert(image.end(), header.begin(), header.end());
    for (std::size_t i = 0; i < codes; ++i) {
        const auto width = static_cast<std::uint8_t>(i % 7 == 0 ? 0 : i % 11 == 0 ? 255 : i % 20);
        image.insert(image.end(), {width, static_cast<std::uint8_t>(i), 0});
    }
    image.resize(image.size() + 400, 0xA5);
    return image;
}

}  // namespace orvanel
