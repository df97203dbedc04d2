#include "base/bmp.h"

#include "base/little_endian.h"

#include <algorithm>

namespace orvanel {

namespace {

constexpr std::size_t colour_size = 4;

/// The number of `count` bytes, low byte first.
std::uint32_t number_at(std::span<const std::uint8_t> file, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = count; i-- > 0;)
        value = value << 8 | (at + i < file.size() ? file[at + i] : 0U);
    return value;
}

}  // namespace

BmpHead bmp_head(std::span<const std::uint8_t> file) {
    const auto at = [file](std::size_t place) { return number_at(file, place, 4); };
    return {at(2),
            at(10),
            at(14),
            static_cast<std::int32_t>(at(18)),
            static_cast<std::int32_t>(at(22)),
            number_at(file, 28, 2),
            at(30),
            at(46)};
}

BmpHead old_bmp_head(std::span<const std::uint8_t> file) {
    const auto at = [file](std::size_t place) { return number_at(file, place, 2); };
    const BmpHead head = bmp_head(file);
    return {head.file_size,
            head.rows_at,
            head.head_size,
            static_cast<std::int32_t>(at(18)),
            static_cast<std::int32_t>(at(20)),
            at(24),
            0,
            0};
}

std::int64_t bmp_stride(const BmpHead& head) {
    return (std::int64_t{head.width} * head.bits + 31) / 32 * 4;
}

std::int64_t bmp_row_at(const BmpHead& head, int y) {
    const int stored = head.height < 0 ? y : head.height - 1 - y;
    return head.rows_at + stored * bmp_stride(head);
}

std::uint32_t bmp_colour(std::span<const std::uint8_t> file, std::size_t at) {
    return number_at(file, at, 3);
}

Bytes bmp_file(std::span<const std::uint8_t> block) {
    Bytes file(bmp_file_head + block.size());
    file[0] = 'B';
    file[1] = 'M';
    std::copy(block.begin(), block.end(), file.begin() + bmp_file_head);
    const std::size_t colours = std::size_t{1} << bmp_head(file).bits;
    put_le32(file, 2, static_cast<std::uint32_t>(file.size()));
    put_le32(file, 10,
             static_cast<std::uint32_t>(bmp_file_head + bmp_usual_head + colours * colour_size));
    return file;
}

}  // namespace orvanel
