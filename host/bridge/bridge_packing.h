// bridge_packing.h: how bytes and file names travel in the messages of bridge.h, for both ends.

#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace orvanel {

constexpr std::uint32_t bridge_send = 0x400;       // + 1..6: so many bytes for the module
constexpr std::uint32_t bridge_name = 0x40A;       // what to do with the file's name
constexpr std::uint32_t bridge_name_last = 0x410;  // 0x40A + 1..6: so many bytes of that name
constexpr std::uint32_t bridge_status = 0x414;     // the status word
constexpr std::uint32_t bridge_take_last = 0x418;  // 0x414 + 1..4: so many bytes from the module
constexpr std::uint32_t bridge_take_key = 0x41E;   // one byte of what the user has typed
constexpr std::uint32_t bridge_introduce = 0x428;  // a companion that wants to be in front

/// The first parameter of bridge_name.
enum BridgeName : std::uint32_t { name_clear, name_feed, name_open };

constexpr std::size_t bridge_piece = 6;       // the most bytes in one message
constexpr std::size_t max_name_length = 255;  // of a file

/// The two parameters of a message. Up to six bytes b0.. travel as b0 and b2 in `first`, b1, b3, b4
/// and b5 in `second`, low byte first; the number of the message says how many.
struct BridgeParameters {
    std::uint32_t first, second;
};

struct BridgeMessage {
    std::uint32_t number;
    BridgeParameters parameters;
};

/// Packs up to six bytes.
BridgeParameters bridge_pack(std::span<const std::uint8_t> data);

/// The first `n` (0..6) of the six bytes, zeros after them.
std::array<std::uint8_t, bridge_piece + 1> bridge_unpack(BridgeParameters parameters, int n);

/// The messages that carry bytes, so many as fit in each, or a file's name after one that clears
/// the former; and the latter with the order to open that file. A name that is longer than
/// max_name_length would be opened nowhere.
std::vector<BridgeMessage> bridge_pieces(std::uint32_t base, std::span<const std::uint8_t> data);
std::vector<BridgeMessage> bridge_name_messages(std::string_view name);
std::vector<BridgeMessage> bridge_open_messages(std::string_view name);

}  // namespace orvanel
