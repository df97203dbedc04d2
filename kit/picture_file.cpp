#include "kit/picture_file.h"

#include "base/bmp.h"
#include "base/pbm.h"
#include "base/png.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <string_view>

namespace orvanel {

namespace {

constexpr std::uint8_t black = 0, white = 255;

std::string size_fault(std::int64_t width, std::int64_t height) {
    if (width > 0 && height > 0 && width <= max_picture_dots && height <= max_picture_dots &&
        width * height <= max_picture_dots)
        return {};
    return "is " + std::to_string(width) + " x " + std::to_string(height) +
           " dots; a picture has 1 to " + std::to_string(max_picture_dots);
}

/// Appends a packed row, the leftmost dot in bit 7. `light` is that of a clear and a set bit.
void append_row(std::span<const std::uint8_t> row, std::span<const std::uint8_t, 2> light,
                GrayPicture& picture) {
    for (std::size_t x = 0; x < static_cast<std::size_t>(picture.width); ++x)
        picture.light.push_back(light[row[x / 8] >> (7 - x % 8) & 1U]);
}

/// How light the two colours of a BMP are. The result is what is wrong with them.
std::string read_colours(std::span<const std::uint8_t> file, const BmpHead& head,
                         std::span<std::uint8_t, 2> light) {
    const std::size_t colour_size = head.head_size == bmp_old_head ? 3 : 4;
    for (std::size_t i = 0; i < light.size(); ++i) {
        const std::size_t at = bmp_file_head + head.head_size + i * colour_size;
        if (at + 3 > file.size()) return "is cut short";
        const std::uint32_t colour = bmp_colour(file, at);
        light[i] = luminance(colour >> 16, colour >> 8 & 0xFF, colour & 0xFF);
    }
    return {};
}

std::string decode_bmp(std::span<const std::uint8_t> file, GrayPicture& picture) {
    BmpHead head = bmp_head(file);
    if (head.head_size == bmp_old_head)
        head = old_bmp_head(file);
    else if (head.head_size < bmp_usual_head)
        return "has a damaged head";
    if (head.bits != 1)
        return "is a BMP with " + std::to_string(head.bits) +
               " bits a dot; 1 can be read, or a PNG";
    if (head.compression != 0) return "is a packed BMP, which isn't read";
    const std::int64_t height = std::abs(std::int64_t{head.height});
    if (std::string fault = size_fault(head.width, height); !fault.empty()) return fault;
    if (head.rows_at + bmp_stride(head) * height > std::ssize(file)) return "is cut short";
    std::array<std::uint8_t, 2> light{};
    if (std::string fault = read_colours(file, head, light); !fault.empty()) return fault;
    picture.width = head.width;
    picture.height = static_cast<int>(height);
    for (int y = 0; y < picture.height; ++y)
        append_row(file.subspan(static_cast<std::size_t>(bmp_row_at(head, y))), light, picture);
    return {};
}

std::string decode_pbm(std::span<const std::uint8_t> file, GrayPicture& picture) {
    PbmHead head{};
    if (std::string fault = read_pbm_head(file, head); !fault.empty()) return fault;
    if (std::string fault = size_fault(head.width, head.height); !fault.empty()) return fault;
    Bytes rows;
    if (std::string fault = read_pbm_rows(head, rows); !fault.empty()) return fault;
    picture.width = static_cast<int>(head.width);
    picture.height = static_cast<int>(head.height);
    const std::size_t stride = rows.size() / static_cast<std::size_t>(head.height);
    constexpr std::array light{white, black};
    for (std::size_t at = 0; at < rows.size(); at += stride)
        append_row(std::span(rows).subspan(at), light, picture);
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
    if (begins("\x89PNG")) return read_png(file, size_fault, picture);
    if (begins("BM")) return decode_bmp(file, picture);
    if (is_pbm(file)) return decode_pbm(file, picture);
    return "is neither a PNG nor a BMP nor a PBM";
}

Bytes encode_png(const GrayPicture& picture) {
    Bytes file;
    const PngPixels pixels{picture.width, picture.height, 1, picture.light, {}};
    if (!write_png(pixels, file).empty()) throw std::bad_alloc();
    return file;
}

}  // namespace orvanel
