#include "host/requests/main_requests.h"

#include "base/bytes.h"
#include "firmware/core/roof/device.h"
#include "host/program/settings.h"
#include "host/requests/painter.h"
#include "host/window/ground/ports_panel.h"
#include "seam/host_calls.h"
#include "seam/platform.h"

#include <atomic>
#include <cstdint>

namespace orvanel {

namespace {

enum MessageState : std::uint32_t { no_message, asked, shown, sealed };

// firmware_thread leaves a message and waits until the state is back at no_message, or sealed.
constinit std::atomic<std::uint32_t> message_state{sealed};

// Published by message_state; the firmware keeps what they point at alive while it waits.
constinit std::string_view message_caption{};
constinit std::string_view message_text{};

constinit std::atomic<std::uint32_t> beeps_asked{0};
constinit std::atomic<bool> ports_asked{false};

void serve_message() {
    std::uint32_t state = asked;
    if (message_state.compare_exchange_strong(state, shown))
        open_message_box(MessageOf::module, message_caption, message_text);
}

void serve_beeps() {
    for (std::uint32_t n = beeps_asked.exchange(0); n > 0; --n)
        sound_beep();
}

}  // namespace

void show_message(std::string_view caption, std::string_view text) {
    if (on_main_thread()) return open_message_box(MessageOf::host, caption, text);
    message_caption = caption;
    message_text = text;
    std::uint32_t state = no_message;
    if (!message_state.compare_exchange_strong(state, asked)) return;
    wake_main();
    for (state = asked; state == asked || state == shown; state = message_state.load())
        message_state.wait(state);
}

void message_closed() {
    std::uint32_t state = shown;
    if (message_state.compare_exchange_strong(state, no_message)) message_state.notify_all();
}

void open_messages() { message_state.store(no_message); }

void seal_messages() {
    message_state.store(sealed);
    message_state.notify_all();
}

void beep() {
    if (!beep_on.load()) return;
    if (on_main_thread()) return sound_beep();
    beeps_asked.fetch_add(1);
    wake_main();
}

void request_ports() {
    ports_asked.store(true);
    wake_main();
}

void serve_main_requests() {
    serve_repaint();
    serve_message();
    serve_beeps();
    if (ports_asked.exchange(false)) ports_show(low8(ports_shown.load()));
}

}  // namespace orvanel
