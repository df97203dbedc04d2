// fuzz_bridge.cpp: any messages, 12 bytes each as they come from a connection, leave the bridge
// whole. No name leads anywhere: each begins with a byte that makes it one that is not there.

#include "host/bridge/bridge.h"
#include "link/feeds/feeds.h"
#include "link/ground/pipes.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr std::size_t message_size = 12;

std::uint32_t word_at(std::span<const std::uint8_t> bytes, std::size_t at) {
    std::uint32_t word = 0;
    for (std::size_t i = 4; i-- > 0;)
        word = word << 8 | bytes[at + i];
    return word;
}

void clear_name() {
    using namespace orvanel;
    bridge_message({bridge_name, {name_clear, 0}});
    bridge_message({bridge_name + 1, {1, 0}});
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    power_on_pipes();
    clear_name();
    std::span<const std::uint8_t> bytes{data, size};
    for (; bytes.size() >= message_size; bytes = bytes.subspan(message_size)) {
        // Numbers near the bridge's own, or most runs would say nothing to it.
        const std::uint32_t number = bytes[3] == 0 ? 0x400U + bytes[0] % 0x30 : word_at(bytes, 0);
        if (number == bridge_name && word_at(bytes, 4) == name_clear) {
            clear_name();
            continue;
        }
        const std::uint32_t result =
            bridge_message({number, {word_at(bytes, 4), word_at(bytes, 8)}});
        if (number == bridge_status && (result & 0xFFFFFF) > pipe_size) std::abort();
        if (number == bridge_status && result >> 24 > key_ring_size) std::abort();
        key_ring_put(bytes[4]);
        tx_pipe_put(bytes[8]);
        if (feed_left() != 0) std::abort();
    }
    return 0;
}
