#include "host/scenario/window_picture.h"

#include "base/bmp.h"
#include "base/bytes.h"
#include "base/pbm.h"
#include "base/png.h"
#include "base/safe_file.h"
#include "host/skin/painting.h"
#include "host/skin/view.h"

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

    Bytes file;
    std::string fault = write_png({width, height, 3, rows, {}}, file);
    return fault.empty() ? replace_file(path, file, Backup::none) : fault;
}

std::string write_outline(const std::string& path, const Outline& outline) {
    return replace_file(path, pbm_file(outline.width, outline.height, outline.rows), Backup::none);
}

std::string write_clipboard(const std::string& path, std::span<const std::uint8_t> dib) {
    return replace_file(path, bmp_file(dib), Backup::none);
}

}  // namespace orvanel
