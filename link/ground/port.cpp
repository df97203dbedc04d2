#include "link/ground/port.h"

#include "base/bytes.h"
#include "link/ground/wire.h"
#include "seam/platform.h"

namespace orvanel {

constinit WireListener wire_listener = nullptr;

namespace {

constexpr std::uint8_t address_selected_at_start = 7;
constexpr std::uint8_t usual_timeout = 200;  // units of 10 ms
constexpr std::uint8_t usual_packet_size = 64;
constexpr std::uint8_t tick = 10;  // units of 10 ms

}  // namespace

constinit std::atomic<std::int32_t> com_port{-1};
constinit std::atomic<std::int32_t> com_baud{9600};
constinit std::atomic<std::int32_t> line_baud{9600};
constinit std::atomic<bool> rts_wanted{true};
constinit std::atomic<bool> protocol_on{true};
constinit std::atomic<std::uint8_t> configured_address{address_selected_at_start};
constinit std::atomic<std::uint8_t> module_address{0};
constinit std::atomic<bool> module_selected{false};
constinit std::atomic<FrameProgress> frame_progress{{FrameState::start, 0}};
constinit std::atomic<std::uint8_t> frame_timeout_reload{0};
constinit std::atomic<std::uint8_t> packet_size{0};
constinit std::atomic<std::uint64_t> line_bytes_in{0};
constinit std::array<std::atomic<std::uint8_t>, 65536> line_bytes_seen{};
constinit std::atomic<std::uint64_t> line_bytes_out{0};
constinit std::atomic<std::uint64_t> frames_good{0};
constinit std::atomic<std::uint64_t> frames_bad{0};
constinit std::atomic<std::uint64_t> answer_bytes_dropped{0};
static_assert(std::atomic<FrameProgress>::is_always_lock_free);

void power_on_link() {
    module_address.store(configured_address.load());
    module_selected.store(module_address.load() == address_selected_at_start);
    frame_timeout_reload.store(usual_timeout);
    frame_progress.store({FrameState::start, 0});
    packet_size.store(usual_packet_size);
}

void com_set_baud(std::int32_t baud) {
    line_baud.store(baud);
    wake_link();
}

void com_restore_baud() {
    // A user who chooses another speed meanwhile sets the line's too, and that must stand.
    std::int32_t baud = com_baud.load();
    for (line_baud.store(baud); com_baud.load() != baud; line_baud.store(baud))
        baud = com_baud.load();
}

void com_rts_on() {
    // Asked for after every byte below the low mark: look before writing a word that two threads
    // share.
    if (rts_wanted.load(std::memory_order_relaxed)) return;
    rts_wanted.store(true);
    wake_link();
}

void com_rts_off() { rts_wanted.store(false); }

void tick_frame_timeout() {
    FrameProgress seen = frame_progress.load();
    while (seen.frame_timeout != 0) {
        const FrameProgress next =
            seen.frame_timeout > tick
                ? FrameProgress{seen.frame_state, low8(seen.frame_timeout - tick)}
                : FrameProgress{FrameState::start, 0};
        // A byte that comes meanwhile brings a new limit, and we look again.
        if (!frame_progress.compare_exchange_weak(seen, next)) continue;
        const bool ran_out = next.frame_timeout == 0 && seen.frame_state != FrameState::start;
        if (ran_out && wire_is_traced()) wire_listener({.kind = WireKind::timed_out});
        return;
    }
}

}  // namespace orvanel
