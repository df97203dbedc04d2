#include "host/program/demo.h"

#include "base/unpack.h"
#include "link/feeds/feeds.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvanel {

namespace {

constexpr std::uint8_t packed_demo[]{
#include "demo_blob.inc"
};
constexpr std::size_t demo_stream_size = 32454;

constinit std::vector<std::uint8_t> demo_stream{};  // unpacked when it is first asked for

}  // namespace

bool demo_is_whole() {
    if (demo_stream.empty()) demo_stream = unpack_blob(packed_demo, demo_stream_size);
    return !demo_stream.empty();
}

void start_demo_feed() {
    if (demo_is_whole()) start_feed_memory(demo_stream);
}

}  // namespace orvanel
