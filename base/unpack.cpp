#include "base/unpack.h"

#include <zlib.h>

namespace orvanel {

std::vector<std::uint8_t> unpack_blob(std::span<const std::uint8_t> source,
                                      std::size_t unpacked_size) {
    std::vector<std::uint8_t> block(unpacked_size);
    uLongf size = unpacked_size;
    const bool unpacked = uncompress(block.data(), &size, source.data(), source.size()) == Z_OK;
    return unpacked && size == unpacked_size ? block : std::vector<std::uint8_t>{};
}

}  // namespace orvanel
