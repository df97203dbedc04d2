#include "host/scenario/picture.h"

#include "base/bytes.h"
#include "base/files.h"
#include "base/pbm.h"
#include "base/png.h"
#include "base/safe_file.h"
#include "firmware/raster/refresh.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace orvanel {

namespace {

constexpr std::size_t max_picture_bytes = std::size_t{16} << 20;  // bytes of a file

std::string size_fault(std::int64_t width, std::int64_t height) {
    if (width == screen_width && height == screen_height) return {};
    return "is " + std::to_string(width) + " x " + std::to_string(height) + " dots, not " +
           std::to_string(screen_width) + " x " + std::to_string(screen_height);
}

std::string decode_pbm(std::span<const std::uint8_t> file, BitPlane& dots) {
    if (file.size() < 3 || !is_pbm(file) || file[1] != '4') return "is no binary PBM (P4)";
    PbmHead head{};
    if (std::string fault = read_pbm_head(file, head); !fault.empty()) return fault;
    if (std::string fault = size_fault(head.width, head.height); !fault.empty()) return fault;
    // One white space parts head and rows; more would already be dots.
    if (head.rest.size() != plane_bytes + 1U)
        return "holds " + std::to_string(head.rest.empty() ? 0 : head.rest.size() - 1) +
               " bytes of dots, not " + std::to_string(plane_bytes);
    std::copy_n(head.rest.begin() + 1, dots.size(), dots.begin());
    return {};
}

std::string decode_png(std::span<const std::uint8_t> file, BitPlane& dots) {
    constexpr std::uint8_t middle = 128;
    GrayPicture picture;
    if (std::string fault = read_png(file, size_fault, picture); !fault.empty()) return fault;
    const std::uint8_t* light = picture.light.data();
    for (std::uint8_t& eight : dots) {
        int bits = 0;
        for (int i = 0; i < 8; ++i)
            bits = bits << 1 | (*light++ < middle ? 1 : 0);
        eight = static_cast<std::uint8_t>(bits);
    }
    return {};
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
enum Colour : std::uint8_t { white, black, pale, red, blue, frame, colour_count };

// Red, green, blue. `pale` is set in both, `red` is too much, `blue` is missing.
constexpr std::array<std::uint8_t, std::size_t{3} * colour_count> palette{
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

void put_dot(std::span<std::uint8_t> pixels, int panel, int x, int y, Colour colour) {
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
    std::string fault = read_file(path, max_picture_bytes, file);
    if (!fault.empty()) return fault;
    return ends_in(path, ".pbm") ? decode_pbm(file, dots) : decode_png(file, dots);
}

std::string write_picture(const std::string& path, const BitPlane& dots) {
    Bytes file;
    std::string fault;
    if (ends_in(path, ".pbm"))
        file = pbm_file(screen_width, screen_height, dots);
    else
        fault = write_png_dots(screen_width, screen_height, dots, file);
    return fault.empty() ? replace_file(path, file, Backup::none) : fault;
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
    Bytes file;
    std::string fault = write_png({difference_width, difference_height, 1, pixels, palette}, file);
    return fault.empty() ? replace_file(path, file, Backup::none) : fault;
}

}  // namespace orvanel
