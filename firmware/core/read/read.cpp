#include "firmware/core/read/read.h"

#include "base/bytes.h"
#include "base/hex.h"
#include "firmware/core/ground/draw_area.h"
#include "firmware/core/ground/requests.h"
#include "firmware/core/ground/trace.h"
#include "firmware/store/ground/macro.h"
#include "link/ground/pipes.h"
#include "seam/platform.h"

#include <algorithm>
#include <utility>

namespace orvanel {

constinit std::uint8_t current_byte = 0;
constinit std::uint8_t lead_in = 0;
constinit std::array<std::uint8_t, max_reads> params{};

namespace {

constexpr int idle_sleep_ms = 5;

constexpr std::uint8_t zoom_from(std::uint8_t v) { return low8(((v - 1) & 3) + 1); }
static_assert(zoom_from(4) == 4 && zoom_from(5) == 1 && zoom_from(0) == 4);

constexpr std::uint8_t bar_index_from(std::uint8_t v) { return low8((v - 1) & 31); }
static_assert(bar_index_from(1) == 0 && bar_index_from(33) == 0 && bar_index_from(0) == 31);

std::uint8_t clamped(std::uint8_t v, std::uint8_t last) {
    if (v > last) remark(Remark::clamped, v, last);
    return std::min(v, last);
}
std::uint8_t clamp_x(std::uint8_t v) { return clamped(v, last_x); }
std::uint8_t clamp_y(std::uint8_t v) { return clamped(v, last_y); }

constexpr bool is_digit(std::uint8_t b) { return b >= '0' && b <= '9'; }

int read_hex_digit() { return hex_digit(static_cast<char>(read_byte())); }

std::uint32_t read_hex_digits() {
    std::uint32_t value = 0;
    for (int digit = read_hex_digit(); digit >= 0; digit = read_hex_digit())
        value = value * 16 + static_cast<std::uint32_t>(digit);
    return value;
}

}  // namespace

bool read_next_byte(Idle idle) {
    if (breaking_off()) {
        current_byte = 0;
        return true;
    }
    if (tick_yield_pending.load(std::memory_order_relaxed)) {
        tick_yield_pending.store(false);
        sleep_ms(idle_sleep_ms);
    }
    if (macro_depth > 0) {
        // Asked first: the last byte of a macro ends its level.
        ByteSource source{};
        if (tracing()) [[unlikely]]
            source = next_macro_source();
        current_byte = next_macro_byte();
        spend_byte_time();
        if (tracing()) [[unlikely]]
            tell_byte(current_byte, source);
        return true;
    }
    if (rx_count() > 0) {
        // The one other consumer is a clearing, on this thread; a byte that is counted is there.
        current_byte = low8(rx_pipe_get());
        spend_byte_time();
        if (tracing()) [[unlikely]]
            tell_byte(current_byte, rx_source());
        return true;
    }
    trace(TraceKind::idle);
    if (idle == Idle::until_woken)
        sleep_until_woken(idle_sleep_ms);
    else
        sleep_ms(idle_sleep_ms);
    return false;
}

std::uint8_t read_byte() {
    while (!read_next_byte()) {
    }
    return current_byte;
}

std::uint8_t read_letter() {
    read_byte();
    if (current_byte >= 'a' && current_byte <= 'z') current_byte = low8(current_byte - 'a' + 'A');
    return current_byte;
}

std::uint32_t read_number() {
    // Separators, blanks and stray letters in front of a number vanish here; a '-' does too.
    do {
        read_byte();
        if (current_byte == '-') remark(Remark::sign_dropped);
    } while (!is_digit(current_byte) && current_byte != '$' && !breaking_off());
    if (current_byte == '$') return read_hex_digits();
    std::uint32_t value = 0;
    for (; is_digit(current_byte); read_byte())
        value = value * 10 + static_cast<std::uint32_t>(current_byte - '0');
    return value;
}

std::uint8_t read_param() {
    if (lead_in == lead_in_esc) {
        read_byte();
    } else {
        const std::uint32_t number = read_number();
        current_byte = low8(number);
        if (number != current_byte) remark(Remark::wrapped, static_cast<int>(number), current_byte);
    }
    trace(TraceKind::parameter, current_byte);
    return current_byte;
}

void read_point1() {
    draw_area.x1 = clamp_x(read_param());
    draw_area.y1 = clamp_y(read_param());
}

void read_point2() {
    draw_area.x2 = clamp_x(read_param());
    draw_area.y2 = clamp_y(read_param());
}

void read_rect() {
    read_point1();
    read_point2();
    if (draw_area.x1 > draw_area.x2) std::swap(draw_area.x1, draw_area.x2);
    if (draw_area.y1 > draw_area.y2) std::swap(draw_area.y1, draw_area.y2);
}

std::uint8_t read_zoom() {
    const std::uint8_t v = read_param();
    const std::uint8_t zoom = zoom_from(v);
    if (v != zoom) remark(Remark::wrapped, v, zoom);
    return current_byte = zoom;
}

std::uint8_t read_bar_index() {
    const std::uint8_t v = read_param();
    const std::uint8_t slot = bar_index_from(v);
    if (v != slot + 1) remark(Remark::wrapped, v, slot + 1);
    return current_byte = slot;
}

void read_params(const std::array<Read, max_reads>& reads) {
    std::size_t count = 0;
    for (const Read read : reads) {
        switch (read) {
        case Read::none:
            return;
        case Read::p:
            params[count++] = read_param();
            break;
        case Read::pt1:
            read_point1();
            break;
        case Read::pt2:
            read_point2();
            break;
        case Read::rect:
            read_rect();
            break;
        case Read::zoom:
            params[count++] = read_zoom();
            break;
        case Read::bar:
            params[count++] = read_bar_index();
            break;
        default:
            break;  // read by the handler
        }
    }
}

}  // namespace orvanel
