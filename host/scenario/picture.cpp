#include "host/scenario/picture.h"

#include "base/bytes.h"
#include "base/files.h"
#include "base/pbm.h"
#include "base/safe_file.h"
#include "firmware/raster/refresh.h"

#include <png.h>

#include <algorithm>
#include <array>
#include <bit>
#include <csetjmp>
#include <cstddef>
#include <span>
#include <vector>

namespace orvanel {

namespace {

constexpr std::size_t longest_picture = std::size_t{16} << 20;  // bytes of a file

std::string size_fault(long width, long height) {
    return "is " + std::to_string(width) + " x " + std::to_string(height) + " dots, not " +
           std::to_string(screen_width) + " x " + std::to_string(screen_height);
}

std::string decode_pbm(std::span<const std::uint8_t> file, BitPlane& dots) {
    if (file.size() < 3 || file[0] != 'P' || file[1] != '4') return "is no binary PBM (P4)";
    std::span<const std::uint8_t> rest = file.subspan(2);
    const long width = take_pbm_number(rest);
    const long height = take_pbm_number(rest);
    if (width < 0 || height < 0) return "has a damaged head";
    if (width != screen_width || height != screen_height) return size_fault(width, height);
    // One white space parts head and rows; more would already be dots.
    if (rest.size() != plane_bytes + 1U)
        return "holds " + std::to_string(rest.empty() ? 0 : rest.size() - 1) +
               " bytes of dots, not " + std::to_string(plane_bytes);
    std::copy_n(rest.begin() + 1, dots.size(), dots.begin());
    return {};
}

Bytes encode_pbm(const BitPlane& dots) {
    const std::string head =
        "P4\n" + std::to_string(screen_width) + " " + std::to_string(screen_height) + "\n";
    Bytes file(head.begin(), head.end());
    file.insert(file.end(), dots.begin(), dots.end());
    return file;
}

/// Of four bytes as they stand: red, green, blue, opacity. What lets light through shows white
/// behind it.
bool is_dark(std::uint32_t pixel) {
    const auto rgba = std::bit_cast<std::array<png_byte, 4>>(pixel);
    const int luminance = (299 * rgba[0] + 587 * rgba[1] + 114 * rgba[2]) / 1000;
    return 255 - (255 - luminance) * rgba[3] / 255 < 128;
}

std::string decode_png(std::span<const std::uint8_t> file, BitPlane& dots) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_memory(&image, file.data(), file.size()) == 0)
        return std::string("is no readable PNG: ") + image.message;
    if (image.width != screen_width || image.height != screen_height) {
        std::string fault = size_fault(image.width, image.height);
        png_image_free(&image);
        return fault;
    }
    image.format = PNG_FORMAT_RGBA;
    std::vector<std::uint32_t> pixels(std::size_t{screen_width} * screen_height);
    if (png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) == 0)
        return std::string("is damaged: ") + image.message;
    // Most pixels are like the one before.
    std::uint32_t before = pixels[0];
    bool dark = is_dark(before);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (pixels[i] != before) dark = is_dark(before = pixels[i]);
        dots[i / 8] = static_cast<std::uint8_t>(dots[i / 8] << 1 | (dark ? 1 : 0));
    }
    return {};
}

void append_png_data(png_structp png, png_bytep data, png_size_t n) {
    auto* file = static_cast<Bytes*>(png_get_io_ptr(png));
    file->insert(file->end(), data, data + n);
}

void flush_nothing(png_structp /*png*/) {}

/// Everything that a jump out of the library could skip lives in the caller.
bool write_png_rows(png_structp png, png_infop info, std::span<png_byte*> rows, Bytes& file) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    png_set_write_fn(png, &file, append_png_data, flush_nothing);
    png_set_IHDR(png, info, screen_width, screen_height, 1, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE,
                 PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, 9);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_NONE);
    png_set_rows(png, info, rows.data());
    // Gray counts light: a set dot is a 0.
    png_write_png(png, info, PNG_TRANSFORM_INVERT_MONO, nullptr);
    return true;
}

/// Empty if the library has no memory left.
Bytes encode_png(BitPlane dots) {
    Bytes file;
    std::array<png_byte*, screen_height> rows{};
    for (std::size_t y = 0; y < rows.size(); ++y)
        rows[y] = dots.data() + y * plane_stride;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png == nullptr ? nullptr : png_create_info_struct(png);
    if (info == nullptr || !write_png_rows(png, info, rows, file)) file.clear();
    png_destroy_write_struct(&png, &info);
    return file;
}

const UprightImage& image_of(Shown shown) {
    const bool flash =
        shown == Shown::flash || (shown == Shown::present_phase && flash_phase.load() != 0);
    return flash ? lcd_image_flash : lcd_image;
}

/// The eight dots that are byte `at` of a plane, top row first.
std::uint8_t image_byte(const UprightImage& image, std::size_t at) {
    const std::size_t column = at % plane_stride;
    const auto& row = image[last_y - at / plane_stride];
    const std::uint64_t word = row[column / 8].load(std::memory_order_relaxed);
    return static_cast<std::uint8_t>(word >> (56 - column % 8 * 8) & 0xFF);
}

/// The colours of the difference picture, as places in its palette.
enum Colour : png_byte { white, black, pale, red, blue, frame, colour_count };

// Red, green, blue. `pale` is set in both, `red` is too much, `blue` is missing.
constexpr std::array<png_byte, std::size_t{3} * colour_count> palette{
    255, 255, 255, 0, 0, 0, 200, 200, 200, 220, 0, 0, 0, 60, 220, 128, 128, 128};

constexpr int enlarged = 3;  // pixels for a dot
constexpr int gap = 6;       // pixels around and between the three
constexpr int panel_width = screen_width * enlarged;
constexpr int panel_height = screen_height * enlarged;
constexpr int difference_width = 3 * panel_width + 4 * gap;
constexpr int difference_height = panel_height + 2 * gap;

Colour difference_colour(bool expected, bool actual) {
    if (expected == actual) return expected ? pale : white;
    return actual ? red : blue;
}

void put_dot(std::span<png_byte> pixels, int panel, int x, int y, Colour colour) {
    for (int i = 0; i < enlarged * enlarged; ++i) {
        const int column = gap + panel * (panel_width + gap) + x * enlarged + i % enlarged;
        const int row = gap + y * enlarged + i / enlarged;
        pixels[static_cast<std::size_t>(row * difference_width + column)] = colour;
    }
}

}  // namespace

BitPlane take_glass(Shown shown) {
    const UprightImage& image = image_of(shown);
    BitPlane dots{};
    for (std::size_t i = 0; i < dots.size(); ++i)
        dots[i] = image_byte(image, i);
    return dots;
}

bool glass_is(const BitPlane& dots, Shown shown) {
    const UprightImage& image = image_of(shown);
    for (std::size_t i = 0; i < dots.size(); ++i)
        if (dots[i] != image_byte(image, i)) return false;
    return true;
}

bool is_picture_path(const std::string& path) {
    return ends_in(path, ".png") || ends_in(path, ".pbm");
}

std::string read_picture(const std::string& path, BitPlane& dots) {
    Bytes file;
    std::string fault = read_file(path, longest_picture, file);
    if (!fault.empty()) return fault;
    return ends_in(path, ".pbm") ? decode_pbm(file, dots) : decode_png(file, dots);
}

std::string write_picture(const std::string& path, const BitPlane& dots) {
    const Bytes file = ends_in(path, ".pbm") ? encode_pbm(dots) : encode_png(dots);
    return file.empty() ? "no memory left" : replace_file(path, file, Backup::none);
}

std::string write_difference(const std::string& path, const BitPlane& expected,
                             const BitPlane& actual) {
    Bytes pixels(std::size_t{difference_width} * difference_height, frame);
    for (int y = 0; y < screen_height; ++y)
        for (int x = 0; x < screen_width; ++x) {
            const bool wanted = plane_get(expected.data(), x, y);
            const bool got = plane_get(actual.data(), x, y);
            put_dot(pixels, 0, x, y, wanted ? black : white);
            put_dot(pixels, 1, x, y, got ? black : white);
            put_dot(pixels, 2, x, y, difference_colour(wanted, got));
        }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = difference_width;
    image.height = difference_height;
    image.format = PNG_FORMAT_RGB_COLORMAP;
    image.colormap_entries = colour_count;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    Bytes file(size);
    if (png_image_write_to_memory(&image, file.data(), &size, 0, pixels.data(), 0,
                                  palette.data()) == 0)
        return image.message;
    file.resize(size);
    return replace_file(path, file, Backup::none);
}

}  // namespace orvanel
