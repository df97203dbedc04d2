#include "host/requests/painter.h"

#include "base/bytes.h"
#include "host/skin/view.h"
#include "seam/host_calls.h"
#include "seam/platform.h"

#include <atomic>

namespace orvanel {

namespace {

/// A rectangle of dots, inclusive, small enough to travel in half a word.
struct DotRect {
    std::uint8_t x1, y1, x2, y2;
};

constexpr std::uint32_t sealed = 0x8000'0000;
constexpr std::uint32_t ticket_mask = 0x7FFF'FFFF;

// What firmware_thread wants painted: its ticket in the upper half, the rectangle in the lower.
constinit std::atomic<std::uint64_t> asked{0};

// The ticket painted last, and `sealed` while nothing is painted. 32 bits, which the system can
// wait for directly.
constinit std::atomic<std::uint32_t> answered{sealed};

constexpr std::uint64_t pack(std::uint32_t ticket, DotRect r) {
    return std::uint64_t{ticket} << 32 | std::uint32_t{r.x1} << 24 | std::uint32_t{r.y1} << 16 |
           std::uint32_t{r.x2} << 8 | r.y2;
}

constexpr std::uint32_t ticket_of(std::uint64_t request) {
    return static_cast<std::uint32_t>(request >> 32);
}

constexpr DotRect rect_of(std::uint64_t request) {
    const auto byte_at = [request](int shift) {
        return static_cast<std::uint8_t>(request >> shift & 0xFF);
    };
    return {byte_at(24), byte_at(16), byte_at(8), byte_at(0)};
}
static_assert(rect_of(pack(5, {1, 2, 239, 127})).x2 == 239 && ticket_of(pack(5, {})) == 5);

void paint_dots(DotRect r) { paint_window(display_pixels(r.x1, r.y1, r.x2, r.y2)); }

bool waits_for(std::uint32_t ticket, std::uint32_t answer) {
    return answer != ticket && (answer & sealed) == 0;
}

}  // namespace

void repaint_rect(int x1, int y1, int x2, int y2) {
    const DotRect rect{low8(x1), low8(y1), low8(x2), low8(y2)};
    if (on_main_thread()) {
        paint_dots(rect);
        return;
    }
    std::uint32_t answer = answered.load(std::memory_order_acquire);
    if ((answer & sealed) != 0) return;
    const std::uint32_t ticket = (answer + 1) & ticket_mask;
    asked.store(pack(ticket, rect), std::memory_order_release);
    wake_main();
    while (waits_for(ticket, answer)) {
        answered.wait(answer, std::memory_order_acquire);
        answer = answered.load(std::memory_order_acquire);
    }
}

void open_painter() { answered.store(ticket_of(asked.load())); }

void serve_repaint() {
    const std::uint64_t request = asked.load(std::memory_order_acquire);
    const std::uint32_t ticket = ticket_of(request);
    if (!waits_for(ticket, answered.load(std::memory_order_relaxed))) return;
    paint_dots(rect_of(request));
    answered.store(ticket, std::memory_order_release);
    answered.notify_all();
}

void seal_painter() {
    answered.fetch_or(sealed);
    answered.notify_all();
}

std::uint32_t paints_served() { return answered.load() & ticket_mask; }

}  // namespace orvanel
