#include "tests/support/pactlink_peer.h"

#include "tests/support/module_process.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <thread>

namespace orvanel {

namespace {

using std::chrono::milliseconds;

constexpr std::uint8_t start_data = 0x11;
constexpr std::uint8_t start_control = 0x12;
constexpr std::uint8_t ack = 0x06;
constexpr std::uint8_t nak = 0x15;

// Well after the module's time-out, which the soak sets to 200 ms: it has dropped a frame that
// doesn't go on.
constexpr milliseconds dropped_time{700};
constexpr milliseconds delay{5};
constexpr int lost_ms = 10'000;  // what would answer a delayed frame has done so

[[noreturn]] void give_up(const char* what) {
    std::fprintf(stderr, "the peer: %s\n", what);
    std::_Exit(EXIT_FAILURE);
}

int below(PactlinkPeer& peer, std::size_t limit) {
    return std::uniform_int_distribution<int>(0, static_cast<int>(limit) - 1)(peer.random);
}

bool strikes(PactlinkPeer& peer) { return below(peer, 100) < peer.faults_percent; }

/// What a selected module makes of bytes that begin between two frames.
struct Outcome {
    int acks, naks;
    bool within_frame;  // it waits for more
};

Outcome outcome_of(std::span<const std::uint8_t> bytes) {
    Outcome outcome{};
    while (!bytes.empty()) {
        if (bytes[0] != start_data && bytes[0] != start_control) {
            bytes = bytes.subspan(1);
            continue;
        }
        const std::size_t whole = bytes.size() < 2 ? 3 : std::size_t{bytes[1]} + 3;
        if (bytes.size() < whole) {
            outcome.within_frame = true;
            break;
        }
        const int sum =
            std::accumulate(bytes.begin(), bytes.begin() + static_cast<int>(whole) - 1, 0);
        ++((sum & 0xFF) == bytes[whole - 1] ? outcome.acks : outcome.naks);
        bytes = bytes.subspan(whole);
    }
    return outcome;
}

/// The bytes with one of them dropped, flipped or doubled, or cut off from there on, so that no
/// frame in them fits.
Bytes spoil(PactlinkPeer& peer, std::span<const std::uint8_t> bytes) {
    for (;;) {
        Bytes spoilt(bytes.begin(), bytes.end());
        const auto at = spoilt.begin() + below(peer, spoilt.size());
        switch (below(peer, 4)) {
        case 0:
            spoilt.erase(at);
            break;
        case 1:
            *at = static_cast<std::uint8_t>(*at ^ 1 << below(peer, 8));
            break;
        case 2:
            spoilt.insert(at, *at);
            break;
        default:
            spoilt.erase(at, spoilt.end());
        }
        if (outcome_of(spoilt).acks == 0) return spoilt;
    }
}

/// ACK or NAK; anything else is a fault of the module.
std::uint8_t reply(const PactlinkPeer& peer) {
    const std::uint8_t byte = read_exactly(peer.line, 1)[0];
    if (byte != ack && byte != nak) give_up("the module answers neither ACK nor NAK");
    return byte;
}

bool comes_within(const PactlinkPeer& peer, int ms) {
    pollfd one{peer.line, POLLIN, 0};
    return poll(&one, 1, ms) > 0;
}

void send_spoilt(PactlinkPeer& peer, std::span<const std::uint8_t> frame) {
    ++peer.spoilt_frames;
    const Bytes spoilt = spoil(peer, frame);
    write_all(peer.line, spoilt);
    const Outcome outcome = outcome_of(spoilt);
    for (int i = 0; i < outcome.naks; ++i)
        if (reply(peer) != nak) give_up("the module has acknowledged a spoilt frame");
    if (outcome.within_frame) std::this_thread::sleep_for(dropped_time);
}

/// True if it was acknowledged.
bool send_delayed(PactlinkPeer& peer, std::span<const std::uint8_t> frame) {
    const auto at = static_cast<std::size_t>(below(peer, frame.size() - 1)) + 1;
    // A delay that gets too long ends the frame, and its rest must not be taken for another.
    if (outcome_of(frame.subspan(at)).acks > 0) return false;
    ++peer.delayed_frames;
    write_all(peer.line, frame.first(at));
    std::this_thread::sleep_for(delay);
    write_all(peer.line, frame.subspan(at));
    if (comes_within(peer, lost_ms) && reply(peer) == ack) return true;
    // It took too long, and the rest was another frame or several, none of which fits.
    std::this_thread::sleep_for(dropped_time);
    while (comes_within(peer, 0))
        reply(peer);
    return false;
}

}  // namespace

Bytes frame_of(std::uint8_t start, std::span<const std::uint8_t> payload) {
    Bytes frame(payload.size() + 3);
    frame[0] = start;
    frame[1] = static_cast<std::uint8_t>(payload.size());
    std::copy(payload.begin(), payload.end(), frame.begin() + 2);
    frame.back() = static_cast<std::uint8_t>(std::accumulate(frame.begin(), frame.end() - 1, 0));
    return frame;
}

void send_frame(PactlinkPeer& peer, std::span<const std::uint8_t> frame) {
    ++peer.frames;
    for (;;) {
        if (strikes(peer)) send_spoilt(peer, frame);
        if (strikes(peer) && send_delayed(peer, frame)) return;
        write_all(peer.line, frame);
        if (reply(peer) == ack) return;
        // It has no room, or a frame that was cut short was still open.
        ++peer.refused_frames;
        std::this_thread::sleep_for(dropped_time);
    }
}

Bytes ask(PactlinkPeer& peer, std::span<const std::uint8_t> command) {
    send_frame(peer, frame_of(start_control, command));
    ++peer.answers;
    const Bytes repeat{'R'};
    for (Bytes first;;) {
        Bytes answer = read_exactly(peer.line, 2);
        const Bytes rest = read_exactly(peer.line, std::size_t{answer[1]} + 1);
        answer.insert(answer.end(), rest.begin(), rest.end());
        if (outcome_of(answer).acks != 1) give_up("an answer of the module has a wrong sum");
        if (!first.empty() && answer != first) give_up("R gives another answer");
        if (!strikes(peer)) return {answer.begin() + 2, answer.end() - 1};
        // The line has spoilt it, and its sum tells: to be had once more.
        ++peer.spoilt_answers;
        first = answer;
        send_frame(peer, frame_of(start_control, repeat));
    }
}

}  // namespace orvanel
