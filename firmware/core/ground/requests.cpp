#include "firmware/core/ground/requests.h"

#include "seam/platform.h"

namespace orvanel {

constinit std::atomic<std::uint8_t> reset_kind{0};
constinit std::atomic<bool> restart_requested{false};
constinit std::atomic<bool> shutdown_requested{false};
constinit std::atomic<bool> tick_enabled{false};
constinit std::atomic<bool> tick_yield_pending{false};

void cold_start_requests() {
    reset_kind.store(0);
    tick_enabled.store(false);
    tick_yield_pending.store(false);
}

void request_restart(std::uint8_t kind) {
    reset_kind.store(kind);
    restart_requested.store(true);
    wake_firmware();
}

bool breaking_off() { return restart_requested.load() || shutdown_requested.load(); }

}  // namespace orvanel
