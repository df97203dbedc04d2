#include "base/png.h"

#include "base/bytes.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <bit>
#include <csetjmp>
#include <cstddef>
#include <vector>

namespace orvanel {

namespace {

constexpr std::array<std::uint8_t, 8> magic{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr std::size_t width_at = 16, height_at = 20;  // in the chunk that comes first

std::uint32_t big_endian(std::span<const std::uint8_t> file, std::size_t at) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value << 8 | (at + i < file.size() ? file[at + i] : 0U);
    return value;
}

/// Of four bytes as they stand: red, green, blue, opacity.
std::uint8_t light_of(std::uint32_t pixel) {
    const auto rgba = std::bit_cast<std::array<png_byte, 4>>(pixel);
    const int dark = 255 - luminance(rgba[0], rgba[1], rgba[2]);
    return low8(255 - dark * rgba[3] / 255);
}

Bytes light_of(std::span<const std::uint32_t> pixels) {
    Bytes light(pixels.size());
    // Most pixels are like the one before.
    for (auto run = pixels.begin(); run != pixels.end();) {
        const auto end = std::find_if(run, pixels.end(), [run](auto p) { return p != *run; });
        std::fill(light.begin() + (run - pixels.begin()), light.begin() + (end - pixels.begin()),
                  light_of(*run));
        run = end;
    }
    return light;
}

void append_data(png_structp png, png_bytep data, png_size_t n) {
    auto* file = static_cast<Bytes*>(png_get_io_ptr(png));
    file->insert(file->end(), data, data + n);
}

void flush_nothing(png_structp /*png*/) {}

/// Everything that a jump out of the library could skip lives in the caller.
bool write_rows(png_structp png, png_infop info, int width, std::vector<png_byte*>& rows,
                Bytes& file) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    png_set_write_fn(png, &file, append_data, flush_nothing);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(rows.size()),
                 1, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, 9);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
    png_set_rows(png, info, rows.data());
    // Gray counts light: a set dot is a 0.
    png_write_png(png, info, PNG_TRANSFORM_INVERT_MONO, nullptr);
    return true;
}

}  // namespace

bool is_png(std::span<const std::uint8_t> file) {
    return file.size() >= magic.size() && std::equal(magic.begin(), magic.end(), file.begin());
}

PngSize png_size(std::span<const std::uint8_t> file) {
    return {big_endian(file, width_at), big_endian(file, height_at)};
}

std::string read_png(std::span<const std::uint8_t> file, SizeFault size_fault,
                     GrayPicture& picture) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&image, file.data(), file.size()) == 0)
        return std::string("is no readable PNG: ") + image.message;
    if (std::string fault = size_fault(image.width, image.height); !fault.empty()) {
        png_image_free(&image);
        return fault;
    }
    image.format = PNG_FORMAT_RGBA;
    std::vector<std::uint32_t> pixels(std::size_t{image.width} * image.height);
    if (png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) == 0)
        return std::string("is damaged: ") + image.message;
    picture = {static_cast<int>(image.width), static_cast<int>(image.height), light_of(pixels)};
    return {};
}

std::string write_png(const PngPixels& picture, Bytes& file) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = !picture.palette.empty() ? PNG_FORMAT_RGB_COLORMAP
                   : picture.samples == 3   ? PNG_FORMAT_RGB
                                            : PNG_FORMAT_GRAY;
    image.colormap_entries = static_cast<png_uint_32>(picture.palette.size() / 3);
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    file.resize(size);
    const void* palette = picture.palette.empty() ? nullptr : picture.palette.data();
    if (png_image_write_to_memory(&image, file.data(), &size, 0, picture.pixels.data(), 0,
                                  palette) == 0)
        return image.message;
    file.resize(size);
    return {};
}

std::string write_png_dots(int width, int height, std::span<const std::uint8_t> rows, Bytes& file) {
    const auto stride = static_cast<std::size_t>(width + 7) / 8;
    Bytes dots(rows.begin(), rows.end());  // the library turns them over where they stand
    std::vector<png_byte*> row_at(static_cast<std::size_t>(height));
    for (std::size_t y = 0; y < row_at.size(); ++y)
        row_at[y] = dots.data() + y * stride;
    file.clear();
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png == nullptr ? nullptr : png_create_info_struct(png);
    const bool written = info != nullptr && write_rows(png, info, width, row_at, file);
    png_destroy_write_struct(&png, &info);
    return written ? "" : "no memory left";
}

}  // namespace orvanel
