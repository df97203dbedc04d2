// stream.h: bytes on their way into the module, as a test writes them down.

#pragma once

#include "link/ground/pipes.h"

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace orvanel {

/// The bytes of a literal, its zeros included.
template <std::size_t n> std::vector<std::uint8_t> bytes(const char (&text)[n]) {
    return {text, text + n - 1};
}

/// Puts the bytes of a literal into rx_pipe.
template <std::size_t n> void put(const char (&text)[n]) { rx_pipe_put_block(bytes(text)); }

/// Takes all that waits in tx_pipe.
inline std::vector<std::uint8_t> take_answers() {
    std::vector<std::uint8_t> taken;
    for (int byte = tx_pipe_get(); byte >= 0; byte = tx_pipe_get())
        taken.push_back(static_cast<std::uint8_t>(byte));
    return taken;
}

}  // namespace orvanel
