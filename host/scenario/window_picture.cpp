#include "host/scenario/window_picture.h"

#include "base/bytes.h"
#include "base/safe_file.h"
#include "host/skin/dib.h"
#include "host/skin/painting.h"
#include "host/skin/view.h"

#include <png.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvanel {

namespace {

Bytes red_green_blue(const std::vector<std::uint32_t>& pixels) {
    Bytes bytes;
    bytes.reserve(pixels.size() * 3);
    for (const std::uint32_t pixel : pixels)
        for (const int shift : {16, 8, 0})
            bytes.push_back(static_cast<std::uint8_t>(pixel >> shift & 0xFF));
    return bytes;
}

}  // namespace

std::string write_window(const std::string& path) {
    const int width = window_width();
    const int height = window_height();
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(width) *
                                      static_cast<std::size_t>(height));
    compose_window(pixels, {0, 0, width, height});
    const Bytes rows = red_green_blue(pixels);

    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    Bytes file(size);
    if (png_image_write_to_memory(&image, file.data(), &size, 0, rows.data(), 0, nullptr) == 0)
        return image.message;
    file.resize(size);
    return replace_file(path, file, Backup::none);
}

std::string write_outline(const std::string& path, const Outline& outline) {
    const std::string head =
        "P4\n" + std::to_string(outline.width) + " " + std::to_string(outline.height) + "\n";
    Bytes file(head.begin(), head.end());
    file.insert(file.end(), outline.rows.begin(), outline.rows.end());
    return replace_file(path, file, Backup::none);
}

std::string write_clipboard(const std::string& path, std::span<const std::uint8_t> dib) {
    return replace_file(path, bmp_file(dib), Backup::none);
}

}  // namespace orvanel
