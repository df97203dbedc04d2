#include "firmware/core/ground/tone.h"

#include "seam/host_calls.h"

namespace orvanel {

constinit std::atomic<std::uint8_t> beep_timer{0};

void start_beep(std::uint8_t n) {
    if (n == 0) return;
    beep();
    beep_timer.store(n);
}

}  // namespace orvanel
