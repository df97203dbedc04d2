#include "host/bridge/bridge.h"

#include "base/bytes.h"
#include "firmware/store/ground/macro.h"
#include "host/import/picture_import.h"
#include "host/trace/places.h"
#include "link/feeds/feeds.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"
#include "seam/window_system.h"

#include <algorithm>
#include <string>

namespace orvanel {

namespace {

constexpr std::uint32_t max_sent = bridge_send + bridge_piece;

constinit bool terminal_known = false;        // typed bytes are kept
constinit bool terminal_there = false;        // it hasn't gone since
constinit std::uint32_t terminal_window = 0;  // its number, 0 if it has none

constinit std::array<char, max_name_length + 1> open_name{};
constinit std::size_t open_name_length = 0;
constinit bool open_name_fits = true;

constinit std::array<std::uint8_t, key_ring_size> key_ring{};
constinit int key_head = 0;  // next write
constinit int key_tail = 0;  // next read
constinit int key_count = 0;

int next_key(int at) { return at + 1 == key_ring_size ? 0 : at + 1; }

void clear_name() {
    open_name_length = 0;
    open_name_fits = true;
}

/// A zero ends the name, so what stands after it in its piece is lost.
void append_name(std::span<const std::uint8_t> piece) {
    for (const std::uint8_t byte : piece) {
        if (byte == 0) return;
        open_name_fits = open_name_fits && open_name_length < max_name_length;
        if (!open_name_fits) return;
        open_name[open_name_length++] = static_cast<char>(byte);
    }
}

void feed_file(std::string_view name) {
    start_feed_file(name);
    note_feed(feed_number(), std::string(unquoted(name)), true, acting_scenario_line());
}

void use_name(std::uint32_t what) {
    const std::string_view name(open_name.data(), open_name_length);
    if (what == name_clear)
        clear_name();
    else if (what == name_feed && open_name_fits)
        feed_file(name);
    else if (what == name_open && open_name_fits)
        open_feed(name, 0, 0);
}

/// The status word tells the companion what it may fetch: with a port chosen the bytes are for that
/// port.
std::uint32_t status_word() {
    const int waiting = com_port.load() == 0 ? tx_count() : 0;
    return static_cast<std::uint32_t>(waiting) | static_cast<std::uint32_t>(key_count) << 24;
}

std::uint32_t take_bytes_packed(std::uint32_t n) {
    std::uint32_t packed = 0;
    for (std::uint32_t i = 0; i < n; ++i)
        packed |= std::uint32_t{low8(tx_pipe_get())} << 8 * i;  // an empty pipe gives -1: 0xFF
    return packed;
}

void show_terminal_window() {
    if (terminal_window != 0) activate_other_window(terminal_window);
}

}  // namespace

std::uint32_t bridge_message(BridgeMessage message) {
    const auto [number, parameters] = message;
    if (makes_companion(number)) {
        terminal_known = terminal_there = true;
        terminal_window = parameters.second;
    }
    if (number > bridge_send && number <= max_sent) {
        const auto bytes = bridge_unpack(parameters, static_cast<int>(number - bridge_send));
        auto_macro_mode.store(0);
        rx_pipe_put_block(std::span(bytes).first(number - bridge_send));
        return 0;
    }
    if (number == bridge_name) use_name(parameters.first);
    if (number > bridge_name && number <= bridge_name_last) {
        const auto bytes = bridge_unpack(parameters, static_cast<int>(number - bridge_name));
        append_name(std::span(bytes).first(number - bridge_name));
    }
    if (number == bridge_status) return status_word();
    if (number > bridge_status && number <= bridge_take_last)
        return take_bytes_packed(number - bridge_status);
    if (number == bridge_take_key) return static_cast<std::uint32_t>(key_ring_get());
    if (number != bridge_introduce) return 0;
    show_terminal_window();
    return 1;
}

bool makes_companion(std::uint32_t number) {
    return number == bridge_status || number == bridge_introduce;
}

void companion_gone() { terminal_there = false; }

bool activate_terminal() {
    terminal_known = terminal_there;
    if (terminal_there) show_terminal_window();
    return terminal_there;
}

void key_ring_put(std::uint8_t byte) {
    if (!terminal_known || key_count == key_ring_size) return;
    key_ring[static_cast<std::size_t>(key_head)] = byte;
    key_head = next_key(key_head);
    ++key_count;
}

int key_ring_get() {
    if (key_count <= 0) return -1;
    const std::uint8_t byte = key_ring[static_cast<std::size_t>(key_tail)];
    key_tail = next_key(key_tail);
    --key_count;
    return byte;
}

}  // namespace orvanel
