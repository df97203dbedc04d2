// fuzz_frames.cpp: any bytes on the line, with ticks, answers, resets and changes of mode and port
// between them. The input is a list of steps. Each ACK of a data frame has to stand for its
// payload, whole and in order, and nothing else comes through.

#include "firmware/core/ground/requests.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"
#include "link/roof/com_port.h"
#include "link/roof/link_thread.h"
#include "link/roof/pactlink.h"
#include "tests/fuzz/steps.h"
#include "tests/support/fake_line.h"
#include "tests/support/fake_platform.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <vector>

namespace orvanel {
namespace {

std::vector<std::uint8_t> take_some(std::span<const std::uint8_t>& steps, std::size_t n) {
    n = std::min(n, steps.size());
    std::vector<std::uint8_t> bytes(steps.begin(), steps.begin() + static_cast<std::ptrdiff_t>(n));
    steps = steps.subspan(n);
    return bytes;
}

void check_words() {
    const FrameProgress progress = frame_progress.load();
    check(progress.frame_state >= FrameState::start && progress.frame_state <= FrameState::sum);
    check(packet_size <= max_answer);
    check(answer_frame.answer_payload_length <= max_answer);
    check(rx_count() <= pipe_size);
}

/// A data frame that is whole: the ACK stands for its delivery.
void send_data(std::vector<std::uint8_t> payload) {
    frame_progress = {FrameState::start, 0};
    fake_line.in.clear();
    fake_line.out.clear();
    std::vector<std::uint8_t> frame{frame_data, static_cast<std::uint8_t>(payload.size())};
    frame.insert(frame.end(), payload.begin(), payload.end());
    std::uint8_t sum = 0;
    for (const std::uint8_t byte : frame)
        sum = static_cast<std::uint8_t>(sum + byte);
    frame.push_back(sum);
    const bool fits = static_cast<int>(payload.size()) <= pipe_size - rx_count();
    const std::uint64_t from = rx_pipe.head;
    fake_line.in = frame;
    while (!fake_line.in.empty())
        link_turn();
    if (!module_selected) {
        check(fake_line.out.empty());
        payload.clear();
    } else if (fake_line.cts == 0) {
        check(fake_line.out == std::vector<std::uint8_t>{fits ? frame_ack : frame_nak});
    }
    if (!fits) payload.clear();
    check(rx_pipe.head - from == payload.size());
    for (std::size_t i = 0; i < payload.size(); ++i)
        check(rx_pipe.buffer[(from + i) % pipe_size] == payload[i]);
}

void take_step(std::span<const std::uint8_t>& steps) {
    const std::uint8_t step = take(steps);
    const std::uint8_t n = take(steps);
    switch (step % 12) {
    case 0:
        tick_frame_timeout();
        return;
    case 1:
        tx_pipe_put_block(take_some(steps, n));
        return;
    case 2:
        rx_pipe_put_block(std::vector<std::uint8_t>(std::size_t{n} * 320, n));
        return;
    case 3:
        for (int i = 0; i < n * 320; ++i)
            rx_pipe_get();
        return;
    case 4:
        power_on_link();
        if (n % 2 == 0) power_on_pipes();
        return;
    case 5:
        choose_protocol(n % 4 != 0);
        return;
    case 6:
        com_select(1 + n % max_com_ports, 9600);
        return;
    case 7:
        fake_line.cts = n % 2;
        return;
    case 8:
        fake_line.room = n;
        fake_line.line_error = n % 3 == 0;
        return;
    case 9:
        fake_line.room = static_cast<std::size_t>(-1);
        link_turn();  // what was left over goes
        if (protocol_on) send_data(take_some(steps, n));
        return;
    default:
        const auto bytes = take_some(steps, n);
        fake_line.in.insert(fake_line.in.end(), bytes.begin(), bytes.end());
        link_turn();
    }
}

}  // namespace
}  // namespace orvanel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    close_link();
    fresh_platform();
    fresh_line();
    answer_frame = {};
    configured_address = 7;
    power_on_link();
    power_on_pipes();
    protocol_on = true;
    com_port = 0;
    com_select(1, 9600);
    for (std::span steps(data, size); !steps.empty();) {
        take_step(steps);
        check_words();
    }
    return 0;
}
