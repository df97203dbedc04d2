#include "host/bridge/bridge_packing.h"

#include "base/bytes.h"

#include <algorithm>

namespace orvanel {

BridgeParameters bridge_pack(std::span<const std::uint8_t> data) {
    std::array<std::uint32_t, bridge_piece> b{};
    std::copy_n(data.begin(), std::min(data.size(), b.size()), b.begin());
    return {b[0] | b[2] << 8, b[1] | b[3] << 8 | b[4] << 16 | b[5] << 24};
}

std::array<std::uint8_t, bridge_piece + 1> bridge_unpack(BridgeParameters parameters, int n) {
    const auto [first, second] = parameters;
    std::array<std::uint8_t, bridge_piece + 1> b{low8(first),        low8(second),
                                                 low8(first >> 8),   low8(second >> 8),
                                                 low8(second >> 16), low8(second >> 24)};
    std::fill(b.begin() + n, b.end(), std::uint8_t{0});
    return b;
}

std::vector<BridgeMessage> bridge_pieces(std::uint32_t base, std::span<const std::uint8_t> data) {
    std::vector<BridgeMessage> messages;
    while (!data.empty()) {
        const auto piece = data.first(std::min(data.size(), bridge_piece));
        messages.push_back({base + static_cast<std::uint32_t>(piece.size()), bridge_pack(piece)});
        data = data.subspan(piece.size());
    }
    return messages;
}

std::vector<BridgeMessage> bridge_name_messages(std::string_view name) {
    const std::vector<std::uint8_t> bytes(name.begin(), name.end());
    std::vector<BridgeMessage> messages = bridge_pieces(bridge_name, bytes);
    messages.insert(messages.begin(), {bridge_name, {name_clear, 0}});
    return messages;
}

std::vector<BridgeMessage> bridge_open_messages(std::string_view name) {
    std::vector<BridgeMessage> messages = bridge_name_messages(name);
    messages.push_back({bridge_name, {name_open, 0}});
    return messages;
}

}  // namespace orvanel
