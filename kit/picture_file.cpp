#include "kit/picture_file.h"

#include "base/pbm.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <string_view>

namespace orvanel {

namespace {

constexpr std::uint8_t black = 0, white = 255;

std::uint8_t luminance(int red, int green, int blue) {
    return static_cast<std::uint8_t>((299 * red + 587 * green + 114 * blue) / 1000);
}

std::string size_fault(std::int64_t width, std::int64_t height) {
    if (width > 0 && height > 0 && width <= most_picture_dots && height <= most_picture_dots &&
        width * height <= most_picture_dots)
        return {};
    return "is " + std::to_string(width) + " x " + std::to_string(height) +
           " dots; a picture has 1 to " + std::to_string(most_picture_dots);
}

std::string decode_png(std::span<const std::uint8_t> file, GrayPicture& picture) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&image, file.data(), file.size()) == 0)
        return std::string("is no readable PNG: ") + image.message;
    if (std::string fault = size_fault(image.width, image.height); !fault.empty()) {
        png_image_free(&image);
        return fault;
    }
    image.format = PNG_FORMAT_RGBA;
    Bytes pixels(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) == 0)
        return std::string("is damaged: ") + image.message;
    picture.width = static_cast<int>(image.width);
    picture.height = static_cast<int>(image.height);
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        const int light = luminance(pixels[i], pixels[i + 1], pixels[i + 2]);
        picture.light.push_back(
            static_cast<std::uint8_t>(white - (white - light) * pixels[i + 3] / 255));
    }
    return {};
}

/// The number of `count` bytes, low byte first; 0 beyond the end.
std::int64_t little(std::span<const std::uint8_t> file, std::size_t at, int count) {
    std::int64_t value = 0;
    for (int i = count - 1; i >= 0; --i) {
        const std::size_t place = at + static_cast<std::size_t>(i);
        value = value << 8 | (place < file.size() ? file[place] : 0);
    }
    return value;
}

/// Appends the dots of packed rows, the leftmost in bit 7. `light` is that of a clear and a set
/// bit. `first` is where the top row begins, `step` the bytes from one row down to the next.
void append_rows(std::span<const std::uint8_t> file, std::size_t first, std::ptrdiff_t step,
                 std::span<const std::uint8_t, 2> light, GrayPicture& picture) {
    for (int y = 0; y < picture.height; ++y) {
        const auto row = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(first) + y * step);
        for (int x = 0; x < picture.width; ++x) {
            const auto dx = static_cast<std::size_t>(x);
            const int bit = file[row + dx / 8] >> (7 - dx % 8) & 1;
            picture.light.push_back(light[static_cast<std::size_t>(bit)]);
        }
    }
}

std::string decode_bmp(std::span<const std::uint8_t> file, GrayPicture& picture) {
    constexpr std::size_t head_at = 14;
    const std::int64_t head = little(file, head_at, 4);
    const bool old = head == 12;  // sizes of two bytes, colours of three
    if (!old && head < 40) return "has a damaged head";
    const std::int64_t width = old ? little(file, 18, 2) : std::int32_t(little(file, 18, 4));
    const std::int64_t tall = old ? little(file, 20, 2) : std::int32_t(little(file, 22, 4));
    const std::int64_t depth = little(file, old ? 24 : 28, 2);
    if (depth != 1)
        return "is a BMP with " + std::to_string(depth) + " bits a dot; 1 can be read, or a PNG";
    if (!old && little(file, 30, 4) != 0) return "is a packed BMP, which isn't read";
    const std::int64_t height = tall < 0 ? -tall : tall;
    if (std::string fault = size_fault(width, height); !fault.empty()) return fault;
    const std::int64_t stride = (width + 31) / 32 * 4;
    const std::int64_t dots = little(file, 10, 4);
    if (dots + stride * height > std::ssize(file)) return "is cut short";
    const auto colours = head_at + static_cast<std::size_t>(head);
    std::array<std::uint8_t, 2> light{};
    for (std::size_t i = 0; i < light.size(); ++i) {
        const std::size_t at = colours + i * (old ? 3 : 4);
        if (at + 3 > file.size()) return "is cut short";
        light[i] = luminance(file[at + 2], file[at + 1], file[at]);
    }
    picture.width = static_cast<int>(width);
    picture.height = static_cast<int>(height);
    // The bottom row comes first, unless the height is negative.
    const bool upward = tall > 0;
    const std::int64_t first = upward ? dots + stride * (height - 1) : dots;
    append_rows(file, static_cast<std::size_t>(first), upward ? -stride : stride, light, picture);
    return {};
}

/// Dots written as the digits 0 and 1.
std::string decode_pbm_text(std::span<const std::uint8_t> rest, GrayPicture& picture) {
    for (int i = 0; i < picture.width * picture.height; ++i) {
        skip_pbm_space(rest);
        if (rest.empty()) return "is cut short";
        if (rest[0] != '0' && rest[0] != '1') return "has a dot that is neither 0 nor 1";
        picture.light.push_back(rest[0] == '1' ? black : white);
        rest = rest.subspan(1);
    }
    return {};
}

std::string decode_pbm(std::span<const std::uint8_t> file, GrayPicture& picture) {
    std::span<const std::uint8_t> rest = file.subspan(2);
    const std::int64_t width = take_pbm_number(rest);
    const std::int64_t height = take_pbm_number(rest);
    if (width < 0 || height < 0) return "has a damaged head";
    if (std::string fault = size_fault(width, height); !fault.empty()) return fault;
    picture.width = static_cast<int>(width);
    picture.height = static_cast<int>(height);
    if (file[1] == '1') return decode_pbm_text(rest, picture);
    const std::int64_t stride = (width + 7) / 8;
    // One white space parts head and rows; more would already be dots.
    if (stride * height + 1 > std::ssize(rest)) return "is cut short";
    constexpr std::array light{white, black};
    append_rows(rest, 1, stride, light, picture);
    return {};
}

}  // namespace

std::string decode_picture(std::span<const std::uint8_t> file, GrayPicture& picture) {
    picture = {};
    const auto begins = [file](std::string_view magic) {
        return file.size() >= magic.size() &&
               std::equal(magic.begin(), magic.end(), file.begin(),
                          [](char a, std::uint8_t b) { return static_cast<std::uint8_t>(a) == b; });
    };
    if (begins("\x89PNG")) return decode_png(file, picture);
    if (begins("BM")) return decode_bmp(file, picture);
    if (begins("P1") || begins("P4")) return decode_pbm(file, picture);
    return "is neither a PNG nor a BMP nor a PBM";
}

Bytes encode_png(const GrayPicture& picture) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_GRAY;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    Bytes file(size);
    if (png_image_write_to_memory(&image, file.data(), &size, 0, picture.light.data(), 0,
                                  nullptr) == 0)
        throw std::bad_alloc();
    file.resize(size);
    return file;
}

}  // namespace orvanel
