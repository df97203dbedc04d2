// tick_counter.h: the counting down that firmware_tick does on words which the firmware reloads.

#pragma once

#include "base/bytes.h"

#include <atomic>
#include <cstdint>

namespace orvanel {

/// Takes 1 off `counter` if it is above 0. True if that brought it to 0. A reload by the other
/// thread in between is never lost: the step is done on what it wrote.
inline bool count_down(std::atomic<std::uint8_t>& counter) {
    std::uint8_t seen = counter.load();
    while (seen != 0) {
        const auto less = low8(seen - 1);
        if (counter.compare_exchange_weak(seen, less)) return less == 0;
    }
    return false;
}

}  // namespace orvanel
