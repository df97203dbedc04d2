// wire.h: what happens on the line, told to a listener: the wire layer of a trace. Without a
// listener each of these calls is one look at a word that never changes.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace orvanel {

enum class WireKind : std::uint8_t {
    plain_in,   // `bytes` came, of which the last `lost` had no room in rx_pipe
    sent,       // `bytes` have left
    frame_in,   // `bytes` are a whole frame; `fate` says what became of it
    stray,      // `bytes` came between frames, where nobody reads them
    timed_out,  // the time limit of a frame that was coming in has run out
};

enum class FrameFate : std::uint8_t { good, wrong_sum, no_room, not_selected };

struct WireEvent {
    WireKind kind;
    std::span<const std::uint8_t> bytes{};
    std::size_t lost = 0;
    FrameFate fate{};
    std::uint8_t sum = 0;  // of a frame: the one that its bytes have
};

using WireListener = void (*)(const WireEvent&);

/// Called on link_thread, for `timed_out` on the host's main thread. Set by the host before the
/// link starts, then left alone; null for no trace.
extern WireListener wire_listener;

inline bool wire_is_traced() { return wire_listener != nullptr; }

}  // namespace orvanel
