#include "link/port.h"

namespace orvanel {

namespace {

constexpr std::uint8_t address_selected_at_start = 7;

}  // namespace

constinit std::atomic<std::int32_t> com_baud{9600};
constinit std::atomic<std::int32_t> line_baud{9600};
constinit std::atomic<bool> rts_wanted{true};
constinit std::atomic<std::uint8_t> configured_address{address_selected_at_start};
constinit std::atomic<std::uint8_t> module_address{0};
constinit std::atomic<std::uint8_t> module_selected{0};

void power_on_link() {
    module_address.store(configured_address.load());
    module_selected.store(module_address.load() == address_selected_at_start ? 1 : 0);
}

void com_set_baud(std::int32_t baud) { line_baud.store(baud); }

void com_rts_on() {
    // Asked for after every byte below the low mark: look before writing a word that two threads
    // share.
    if (!rts_wanted.load(std::memory_order_relaxed)) rts_wanted.store(true);
}

void com_rts_off() { rts_wanted.store(false); }

}  // namespace orvanel
