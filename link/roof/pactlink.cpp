#include "link/roof/pactlink.h"

#include "base/bytes.h"
#include "firmware/store/ground/macro.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"
#include "link/ground/wire.h"

#include <algorithm>
#include <initializer_list>
#include <span>

namespace orvanel {

constinit AnswerFrame answer_frame{};

namespace {

// The frame that is coming in.
constinit std::uint8_t frame_type = 0;  // its start byte
constinit std::uint8_t frame_sum = 0;   // of the bytes so far
constinit std::uint8_t frame_length = 0;
constinit std::uint8_t frame_index = 0;  // of its payload
constinit std::array<std::uint8_t, 255> frame_payload{};
constinit std::uint8_t received_sum = 0;
constinit std::uint8_t frame_verdict = frame_nak;  // the answer to the last whole frame

constexpr std::uint8_t start_and_length = 2;
constexpr std::uint8_t upper_case = 0xDF;  // mask: a lower-case letter counts as its upper-case one
constexpr int max_reported_waiting = 128;  // the command I tells no more than these
constexpr int max_reported_room = 250;

/// The checksum was right, and what came with it was taken.
bool is_sound() { return frame_verdict == frame_ack; }

bool is_start(std::uint8_t byte) { return byte == frame_data || byte == frame_control; }

/// Where a byte leads from a state that takes it.
FrameState state_after(FrameState state, std::uint8_t byte) {
    switch (state) {
    case FrameState::start:
        return FrameState::length;
    case FrameState::length:
        return byte == 0 ? FrameState::sum : FrameState::payload;
    case FrameState::payload:
        return frame_index + 1 == frame_length ? FrameState::sum : FrameState::payload;
    default:
        return FrameState::complete;
    }
}

void take(FrameState state, std::uint8_t byte) {
    switch (state) {
    case FrameState::start:
        frame_type = frame_sum = byte;
        return;
    case FrameState::length:
        frame_length = byte;
        frame_index = 0;
        break;
    case FrameState::payload:
        frame_payload[frame_index++] = byte;
        break;
    default:
        frame_verdict = byte == frame_sum ? frame_ack : frame_nak;
        received_sum = byte;
        return;
    }
    frame_sum = low8(frame_sum + byte);
}

std::uint8_t sum_of(std::span<const std::uint8_t> bytes) {
    std::uint8_t total = 0;
    for (const std::uint8_t byte : bytes)
        total = low8(total + byte);
    return total;
}

std::span<const std::uint8_t> last_answer() {
    return std::span(answer_frame.bytes).first(answer_frame.answer_payload_length + std::size_t{3});
}

/// Puts head and sum around the `n` payload bytes that stand in answer_frame.
std::span<const std::uint8_t> close_answer(std::uint8_t start, std::size_t n) {
    answer_frame.answer_payload_length = static_cast<std::uint8_t>(n);
    answer_frame.bytes[0] = start;
    answer_frame.bytes[1] = answer_frame.answer_payload_length;
    const std::size_t end = start_and_length + n;
    answer_frame.bytes[end] = sum_of(std::span(answer_frame.bytes).first(end));
    return last_answer();
}

std::span<const std::uint8_t> answer_values(std::initializer_list<int> values) {
    std::ranges::transform(values, answer_frame.bytes.begin() + start_and_length,
                           [](int value) { return low8(value); });
    return close_answer(frame_control, values.size());
}

/// The bytes leave tx_pipe here: from now on they exist in answer_frame alone.
std::span<const std::uint8_t> answer_waiting() {
    const std::size_t max = packet_size.load();
    std::size_t n = 0;
    for (int byte = 0; n < max && (byte = tx_pipe_get()) >= 0; ++n)
        answer_frame.bytes[start_and_length + n] = low8(byte);
    return close_answer(frame_data, n);
}

void set_parameters() {
    constexpr std::uint8_t whole = 3;
    if (frame_length < whole) return;
    packet_size.store(std::min<std::uint8_t>(frame_payload[1], max_answer));
    frame_timeout_reload.store(frame_payload[2]);
}

/// Carries out a control frame that was acknowledged. The answer frame to send, empty for none.
std::span<const std::uint8_t> frame_action() {
    switch (frame_length == 0 ? 0 : frame_payload[0] & upper_case) {
    case 'I':
        return answer_values({std::min(tx_count(), max_reported_waiting),
                              std::min(pipe_size - rx_count(), max_reported_room)});
    case 'D':
        set_parameters();
        return {};
    case 'P':
        return answer_values(
            {static_cast<int>(max_answer), packet_size.load(), frame_timeout_reload.load()});
    case 'R':
        return last_answer();
    case 'S':
        return answer_waiting();
    default:
        return {};
    }
}

/// Delivers a data frame that is sound. False if it doesn't fit whole; then nothing has changed.
bool deliver() {
    if (frame_length == 0) return true;
    if (frame_length > pipe_size - rx_count()) return false;
    // Before the bytes, which may start an automatic macro of their own.
    auto_macro_mode.store(0);
    return rx_pipe_put_whole(std::span(frame_payload).first(frame_length));
}

void send_verdict(std::uint8_t verdict) {
    com_write({&verdict, 1});
    frame_progress.store({FrameState::complete, 0});
}

/// The frame that came, for a trace.
void tell_frame(FrameFate fate) {
    if (!wire_is_traced()) [[likely]]
        return;
    std::array<std::uint8_t, 255 + 3> bytes{frame_type, frame_length};
    std::copy_n(frame_payload.begin(), frame_length, bytes.begin() + start_and_length);
    const std::size_t end = start_and_length + std::size_t{frame_length};
    bytes[end] = received_sum;
    wire_listener({.kind = WireKind::frame_in,
                   .bytes = std::span(bytes).first(end + 1),
                   .fate = fate,
                   .sum = frame_sum});
}

/// The command A, which is looked at whether or not the module is selected. Selecting another
/// module deselects this one without a word.
void select_module() {
    constexpr std::uint8_t whole = 3;
    if (frame_length < whole) return;
    const std::uint8_t choice = frame_payload[1];  // its case counts
    const bool own = frame_payload[2] == module_address.load();
    if (choice != 'S' && (choice != 'D' || !own)) return;
    module_selected.store(choice == 'S' && own);
    if (own) send_verdict(frame_ack);
}

bool is_selection() {
    return is_sound() && frame_type == frame_control && frame_length > 0 &&
           (frame_payload[0] & upper_case) == 'A';
}

/// What the module does with a frame while it is selected. A data frame is delivered before its
/// verdict goes out, since room and delivery are looked at in one step.
void answer_frame_now() {
    FrameFate fate = is_sound() ? FrameFate::good : FrameFate::wrong_sum;
    if (is_sound() && frame_type == frame_data && !deliver()) {
        frame_verdict = frame_nak;
        fate = FrameFate::no_room;
    }
    tell_frame(fate);
    (is_sound() ? frames_good : frames_bad).fetch_add(1, std::memory_order_relaxed);
    send_verdict(frame_verdict);
    if (!is_sound() || frame_type != frame_control) return;
    if (const auto answer = frame_action(); !answer.empty()) com_write(answer);
}

/// Bytes of one turn that no frame begins with, in a row; for a trace.
struct StrayBytes {
    std::array<std::uint8_t, max_answer + 3> bytes;
    std::size_t count;
};

void tell_stray(StrayBytes& stray) {
    if (stray.count > 0)
        wire_listener(
            {.kind = WireKind::stray, .bytes = std::span(stray.bytes).first(stray.count)});
    stray.count = 0;
}

/// A byte that comes next.
void note_stray(StrayBytes& stray, std::uint8_t byte) {
    if (!wire_is_traced()) [[likely]]
        return;
    if (frame_progress.load().frame_state == FrameState::start && !is_start(byte))
        stray.bytes[stray.count++] = byte;
    else
        tell_stray(stray);
}

}  // namespace

void frame_receive_byte(std::uint8_t byte) {
    FrameProgress seen = frame_progress.load();
    FrameState next{};
    // The tick or a reset may change the word meanwhile: then the byte comes after that.
    do {
        if (seen.frame_state == FrameState::complete) return;
        if (seen.frame_state == FrameState::start && !is_start(byte)) return;
        next = state_after(seen.frame_state, byte);
    } while (!frame_progress.compare_exchange_weak(seen, {next, frame_timeout_reload.load()}));
    take(seen.frame_state, byte);
}

void handle_frame() {
    if (is_selection() || !module_selected.load())
        (is_sound() ? frames_good : frames_bad).fetch_add(1, std::memory_order_relaxed);
    if (is_selection()) {
        tell_frame(FrameFate::good);
        select_module();
    } else if (module_selected.load()) {
        answer_frame_now();
    } else {
        tell_frame(is_sound() ? FrameFate::not_selected : FrameFate::wrong_sum);
    }
    // A limit that still runs does so without harm: the next start byte sets it again.
    FrameProgress seen = frame_progress.load();
    while (!frame_progress.compare_exchange_weak(seen, {FrameState::start, seen.frame_timeout})) {
    }
}

TurnWait framed_turn() {
    const int queued = com_queued_in();
    if (queued < 0) return TurnWait::fault;
    // As in a plain turn: bytes after a change of protocol go the new way.
    if (queued > 0 && !protocol_on.load()) return TurnWait::none;
    std::array<std::uint8_t, max_answer + 3> bytes;
    if (queued > 0) {
        const auto max = std::min(bytes.size(), static_cast<std::size_t>(queued));
        const int got = com_read(std::span(bytes).first(max));
        if (got <= 0) return TurnWait::fault;
        StrayBytes stray{};
        for (const std::uint8_t byte : std::span(bytes).first(static_cast<std::size_t>(got))) {
            note_stray(stray, byte);
            frame_receive_byte(byte);
            if (frame_progress.load().frame_state == FrameState::complete) handle_frame();
        }
        tell_stray(stray);
    }
    if (static_cast<std::size_t>(queued) > bytes.size()) return TurnWait::none;
    if (queued > 0 && frame_progress.load().frame_state != FrameState::start)
        return TurnWait::pause;
    return rts_wanted.load() ? TurnWait::input : TurnWait::change;
}

}  // namespace orvanel
