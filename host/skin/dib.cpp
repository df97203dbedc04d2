#include "host/skin/dib.h"

#include "base/bytes.h"
#include "base/little_endian.h"

#include <algorithm>
#include <utility>

namespace orvanel {

namespace {

constexpr std::size_t file_header_size = 14;
constexpr std::size_t header_size = 40;
constexpr std::size_t colour_size = 4;
constexpr std::uint32_t most_colours = 256;
constexpr std::uint32_t pixels_per_metre = 5865;

// Places in the header.
constexpr std::size_t at_size = 0, at_width = 4, at_height = 8, at_planes = 12, at_bits = 14,
                      at_compression = 16, at_x_per_metre = 24, at_y_per_metre = 28,
                      at_colours_used = 32;

constexpr std::size_t rounded_to_4(std::size_t bytes) { return (bytes + 3) / 4 * 4; }

int header_field(const Dib& dib, std::size_t at) {
    return static_cast<int>(le32(dib.block, dib.header + at));
}

std::size_t row_at(const Dib& dib, int y) {
    return dib.bits + static_cast<std::size_t>(dib_rows(dib) - 1 - y) * dib.stride;
}

std::size_t pixel_at(const Dib& dib, int x, int y) {
    return row_at(dib, y) + static_cast<std::size_t>(x);
}

bool has_colour(const Dib& dib, int index) {
    return index >= 0 &&
           dib.colours + colour_size * (static_cast<std::size_t>(index) + 1) <= dib.bits;
}

}  // namespace

std::string dib_attach(Dib& dib, std::vector<std::uint8_t> bmp) {
    constexpr std::size_t head = file_header_size;
    if (bmp.size() < head + header_size || bmp[0] != 'B' || bmp[1] != 'M') return "is no BMP file";
    if (le32(bmp, head + at_size) != header_size) return "has no header of 40 bytes";
    const std::uint32_t width = le32(bmp, head + at_width);
    const std::uint32_t height = le32(bmp, head + at_height);
    // A height below 0, rows from the top, is a large number here.
    if (width < 2 || width > max_dib_side || height < 1 || height > max_dib_side)
        return "has a side outside 1 to " + std::to_string(max_dib_side);
    if (le16(bmp[head + at_bits], bmp[head + at_bits + 1]) != 8 || le32(bmp, head + at_compression))
        return "has not 8 bits a pixel without compression";
    const std::uint32_t used = le32(bmp, head + at_colours_used);
    if (used > most_colours) return "has more than 256 colours";
    const std::size_t count = used == 0 ? most_colours : used;
    const std::size_t colours = head + header_size;
    const std::size_t bits = colours + colour_size * count;
    const std::size_t stride = rounded_to_4(width);
    // The last row may lack its padding.
    if (bmp.size() < bits + stride * (height - 1) + width) return "ends within its rows";
    bmp.resize(std::max(bmp.size(), bits + stride * height));
    dib = {std::move(bmp),
           head,
           colours,
           bits,
           static_cast<std::uint32_t>(stride),
           1,
           0,
           0,
           {},
           {},
           {},
           {},
           {},
           nullptr,
           nullptr};
    return {};
}

bool dib_create(Dib& dib, int width, int height, int colour_count) {
    const int bits_a_pixel = colour_count == 2     ? 1
                             : colour_count == 16  ? 4
                             : colour_count == 256 ? 8
                                                   : 0;
    const auto in_range = [](int side) { return side >= 1 && side <= max_dib_side; };
    if (bits_a_pixel == 0 || !in_range(width) || !in_range(height)) return false;
    const std::size_t stride =
        rounded_to_4((static_cast<std::size_t>(width * bits_a_pixel) + 7) / 8);
    const std::size_t bits = header_size + colour_size * static_cast<std::size_t>(colour_count);
    std::vector<std::uint8_t> block(bits + stride * static_cast<std::size_t>(height));
    put_le32(block, at_size, header_size);
    put_le32(block, at_width, static_cast<std::uint32_t>(width));
    put_le32(block, at_height, static_cast<std::uint32_t>(height));
    block[at_planes] = 1;
    block[at_bits] = low8(bits_a_pixel);
    put_le32(block, at_x_per_metre, pixels_per_metre);
    put_le32(block, at_y_per_metre, pixels_per_metre);
    dib = {std::move(block),
           0,
           header_size,
           bits,
           static_cast<std::uint32_t>(stride),
           1,
           0,
           0,
           {},
           {},
           {},
           {},
           {},
           nullptr,
           nullptr};
    return true;
}

int dib_columns(const Dib& dib) { return header_field(dib, at_width); }

int dib_rows(const Dib& dib) { return header_field(dib, at_height); }

std::span<const std::uint8_t> dib_row(const Dib& dib, int y) {
    return std::span(dib.block).subspan(row_at(dib, y), dib.stride);
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
    dib_create(target, rows, columns, most_colours);
    const auto from = source.block.begin() + static_cast<std::ptrdiff_t>(source.colours);
    std::copy(from, from + static_cast<std::ptrdiff_t>(source.bits - source.colours),
              target.block.begin() + static_cast<std::ptrdiff_t>(target.colours));
    // A column of the source, from its bottom row up as it is stored, is a row of the target.
    for (int x = 0; x < columns; ++x) {
        const std::uint8_t* pixel = &source.block[source.bits + static_cast<std::size_t>(x)];
        std::uint8_t* to = &target.block[row_at(target, x)];
        for (int i = 0; i < rows; ++i)
            to[i] = pixel[static_cast<std::size_t>(i) * source.stride];
    }
    target.scale = source.scale;
    target.width = source.height;
    target.height = source.width;
    target.area = {0, 0, static_cast<int>(target.width) - 1, static_cast<int>(target.height) - 1};
}

void dib_set_bands(Dib& dib, SkinRect glass) {
    const SkinRect& all = dib.area;
    dib.band_top = {all.left, all.top, all.right, glass.top - 1};
    dib.band_bottom = {all.left, glass.bottom + 1, all.right, all.bottom};
    dib.band_left = {all.left, glass.top, glass.left - 1, glass.bottom};
    dib.band_right = {glass.right + 1, glass.top, all.right, glass.bottom};
}

std::span<const std::atomic<std::uint64_t>> dot_row(const Dib& display, int y) {
    const auto stored = static_cast<std::size_t>(dib_rows(display) - 1 - y);
    if (display.upright != nullptr) return (*display.upright)[stored];
    return (*display.rotated)[stored];
}

std::vector<std::uint8_t> dib_block(const Dib& display) {
    std::vector<std::uint8_t> block = display.block;
    for (int y = 0; y < dib_rows(display); ++y) {
        const auto words = dot_row(display, y);
        for (std::size_t i = 0; i < display.stride; ++i)
            block[row_at(display, y) + i] = low8(static_cast<std::int64_t>(
                words[i / 8].load(std::memory_order_relaxed) >> (56 - i % 8 * 8)));
    }
    return block;
}

std::vector<std::uint8_t> bmp_file(std::span<const std::uint8_t> block) {
    constexpr std::size_t at_file_size = 2, at_rows = 10;
    std::vector<std::uint8_t> file(file_header_size + block.size());
    file[0] = 'B';
    file[1] = 'M';
    put_le32(file, at_file_size, static_cast<std::uint32_t>(file.size()));
    put_le32(file, at_rows,
             static_cast<std::uint32_t>(file_header_size + header_size + 2 * colour_size));
    std::copy(block.begin(), block.end(), file.begin() + file_header_size);
    return file;
}

}  // namespace orvanel
