#include "host/skin/dib.h"

#include "base/bmp.h"
#include "base/little_endian.h"

#include <algorithm>
#include <utility>

namespace orvanel {

namespace {

constexpr std::size_t colour_size = 4;
constexpr std::uint32_t max_colours = 256;
constexpr std::uint32_t pixels_per_metre = 5865;

// Places in the header that are written.
constexpr std::size_t at_size = 0, at_width = 4, at_height = 8, at_planes = 12, at_bits = 14,
                      at_x_per_metre = 24, at_y_per_metre = 28;

int header_field(const Dib& dib, std::size_t at) {
    return static_cast<int>(le32(dib.block, dib.header + at));
}

std::size_t pixel_at(const Dib& dib, int x, int y) {
    return dib_row_at(dib, y) + static_cast<std::size_t>(x);
}

bool has_colour(const Dib& dib, int index) {
    return index >= 0 &&
           dib.colours + colour_size * (static_cast<std::size_t>(index) + 1) <= dib.bits;
}

}  // namespace

std::string dib_attach(Dib& dib, Bytes bmp) {
    if (bmp.size() < bmp_file_head + bmp_usual_head || bmp[0] != 'B' || bmp[1] != 'M')
        return "is no BMP file";
    const BmpHead head = bmp_head(bmp);
    if (head.head_size != bmp_usual_head) return "has no header of 40 bytes";
    // A height below 0 means rows from the top.
    if (head.width < 2 || head.width > max_dib_side || head.height < 1 ||
        head.height > max_dib_side)
        return "has a side outside 1 to " + std::to_string(max_dib_side);
    if (head.bits != 8 || head.compression != 0)
        return "has not 8 bits a pixel without compression";
    if (head.colours_used > max_colours) return "has more than 256 colours";
    const std::size_t count = head.colours_used == 0 ? max_colours : head.colours_used;
    const std::size_t colours = bmp_file_head + bmp_usual_head;
    const std::size_t bits = colours + colour_size * count;
    const auto stride = static_cast<std::uint32_t>(bmp_stride(head));
    const auto rows = static_cast<std::size_t>(head.height);
    // The last row may lack its padding.
    if (bmp.size() < bits + stride * (rows - 1) + static_cast<std::size_t>(head.width))
        return "ends within its rows";
    bmp.resize(std::max(bmp.size(), bits + stride * rows));
    dib = {std::move(bmp), bmp_file_head, colours, bits, stride};
    return {};
}

bool dib_create(Dib& dib, int width, int height, int colour_count) {
    const int bits_a_pixel = colour_count == 2     ? 1
                             : colour_count == 16  ? 4
                             : colour_count == 256 ? 8
                                                   : 0;
    const auto in_range = [](int side) { return side >= 1 && side <= max_dib_side; };
    if (bits_a_pixel == 0 || !in_range(width) || !in_range(height)) return false;
    BmpHead head{};
    head.width = width;
    head.bits = static_cast<std::uint32_t>(bits_a_pixel);
    const auto stride = static_cast<std::uint32_t>(bmp_stride(head));
    const std::size_t bits = bmp_usual_head + colour_size * static_cast<std::size_t>(colour_count);
    Bytes block(bits + stride * static_cast<std::size_t>(height));
    put_le32(block, at_size, bmp_usual_head);
    put_le32(block, at_width, static_cast<std::uint32_t>(width));
    put_le32(block, at_height, static_cast<std::uint32_t>(height));
    block[at_planes] = 1;
    block[at_bits] = low8(bits_a_pixel);
    put_le32(block, at_x_per_metre, pixels_per_metre);
    put_le32(block, at_y_per_metre, pixels_per_metre);
    dib = {std::move(block), 0, bmp_usual_head, bits, stride};
    return true;
}

int dib_columns(const Dib& dib) { return header_field(dib, at_width); }

int dib_rows(const Dib& dib) { return header_field(dib, at_height); }

std::span<const std::uint8_t> dib_row(const Dib& dib, int y) {
    return std::span(dib.block).subspan(dib_row_at(dib, y), dib.stride);
}

std::size_t dib_row_at(const Dib& dib, int y) {
    return dib.bits + static_cast<std::size_t>(dib_rows(dib) - 1 - y) * dib.stride;
}

std::uint8_t dib_get(const Dib& dib, int x, int y) { return dib.block[pixel_at(dib, x, y)]; }

void dib_put(Dib& dib, int x, int y, std::uint8_t value) { dib.block[pixel_at(dib, x, y)] = value; }

std::uint32_t dib_colour(const Dib& dib, int index) {
    if (!has_colour(dib, index)) return 0;
    return le32(dib.block, dib.colours + colour_size * static_cast<std::size_t>(index)) & 0xFFFFFF;
}

void dib_set_colour(Dib& dib, int index, std::uint32_t colour) {
    if (!has_colour(dib, index)) return;
    put_le32(dib.block, dib.colours + colour_size * static_cast<std::size_t>(index),
             colour & 0xFFFFFF);
}

void dib_turn(Dib& target, const Dib& source) {
    const int columns = dib_columns(source);
    const int rows = dib_rows(source);
    dib_create(target, rows, columns, max_colours);
    const auto from = source.block.begin() + static_cast<std::ptrdiff_t>(source.colours);
    std::copy(from, from + static_cast<std::ptrdiff_t>(source.bits - source.colours),
              target.block.begin() + static_cast<std::ptrdiff_t>(target.colours));
    // A column of the source, from its bottom row up as it is stored, is a row of the target.
    for (int x = 0; x < columns; ++x) {
        const std::uint8_t* pixel = &source.block[source.bits + static_cast<std::size_t>(x)];
        std::uint8_t* to = &target.block[dib_row_at(target, x)];
        for (int i = 0; i < rows; ++i)
            to[i] = pixel[static_cast<std::size_t>(i) * source.stride];
    }
}

}  // namespace orvanel
