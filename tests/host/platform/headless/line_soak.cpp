// A long talk with the module over a pseudo terminal, by a peer in a process of its own, first in
// plain bytes and then in Pactlink on a line that spoils frames: line_soak PROGRAM BYTES [SEED]
// The peer sends commands that have the module send bytes back, so what comes back tells whether
// each byte went in once, whole and in order, and came out so. BYTES is how many go each way.

#include "tests/support/module_process.h"
#include "tests/support/pactlink_peer.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

namespace {

using namespace orvanel;

// What may be on its way to the module and back: less than its pipes hold.
constexpr std::size_t window = 40'000;
constexpr int faults_percent = 1;

/// ESC S B: bytes that the module is to send, and the commands that tell it to.
struct Talk {
    Bytes sent;
    Bytes expected;
};

Talk make_talk(std::size_t bytes, std::mt19937& random) {
    std::uniform_int_distribution<int> any_length(1, 255);
    std::uniform_int_distribution<int> any_byte(0, 255);
    Talk talk;
    while (talk.expected.size() < bytes) {
        const int length = any_length(random);
        for (const int byte : {0x1B, int{'S'}, int{'B'}, length})
            talk.sent.push_back(static_cast<std::uint8_t>(byte));
        for (int i = 0; i < length; ++i) {
            talk.expected.push_back(static_cast<std::uint8_t>(any_byte(random)));
            talk.sent.push_back(talk.expected.back());
        }
    }
    return talk;
}

/// Whether more may go out: of what has come back, its share of the commands is behind us.
bool may_send(const Talk& talk, std::size_t sent, std::size_t got) {
    return sent < talk.sent.size() && sent < got * talk.sent.size() / talk.expected.size() + window;
}

void check(const Talk& talk, std::size_t at, std::span<const std::uint8_t> got) {
    if (at + got.size() <= talk.expected.size() &&
        std::equal(got.begin(), got.end(), talk.expected.begin() + static_cast<std::ptrdiff_t>(at)))
        return;
    std::fprintf(stderr, "line_soak: what came back at byte %zu is not what was sent\n", at);
    std::_Exit(EXIT_FAILURE);
}

double seconds_since(std::chrono::steady_clock::time_point begin) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void talk_plain(const ModuleProcess& module, const Talk& talk, std::mt19937& random) {
    std::uniform_int_distribution<std::size_t> any_piece(1, 3000);
    const auto begin = std::chrono::steady_clock::now();
    std::size_t sent = 0, got = 0;
    while (got < talk.expected.size()) {
        const bool room = may_send(talk, sent, got);
        if (!room) wait_readable(module.line);
        pollfd one{module.line, POLLIN, 0};
        while (poll(&one, 1, 0) > 0) {
            const Bytes part = read_some(module.line, 4096);
            check(talk, got, part);
            got += part.size();
        }
        if (!room) continue;
        const std::size_t piece = std::min(any_piece(random), talk.sent.size() - sent);
        write_all(module.line, std::span(talk.sent).subspan(sent, piece));
        sent += piece;
    }
    const double time = seconds_since(begin);
    std::printf("plain: %zu bytes back in %.1f s\n", got, time);
}

/// Fetches answers until the module has none, `max` bytes at most.
std::size_t fetch(PactlinkPeer& peer, const Talk& talk, std::size_t at, std::size_t max) {
    const Bytes command{'S'};
    std::size_t got = 0;
    while (got < max) {
        const Bytes part = ask(peer, command);
        if (part.empty()) break;
        check(talk, at + got, part);
        got += part.size();
    }
    return got;
}

void talk_pactlink(const ModuleProcess& module, const Talk& talk, std::mt19937& random) {
    PactlinkPeer peer{module.line, faults_percent, std::mt19937(random()), 0, 0, 0, 0, 0, 0};
    std::uniform_int_distribution<std::size_t> any_piece(1, 255);
    std::uniform_int_distribution<std::size_t> any_fetch(0, 600);
    const Bytes limits{'D', 64, 20};  // the largest answers, and 200 ms until a frame is dropped
    send_frame(peer, frame_of(0x12, limits));
    const auto begin = std::chrono::steady_clock::now();
    std::size_t sent = 0, got = 0;
    while (got < talk.expected.size()) {
        if (may_send(talk, sent, got)) {
            const std::size_t piece = std::min(any_piece(random), talk.sent.size() - sent);
            send_frame(peer, frame_of(0x11, std::span(talk.sent).subspan(sent, piece)));
            sent += piece;
        }
        got += fetch(peer, talk, got, any_fetch(random));
    }
    const double time = seconds_since(begin);
    std::printf("Pactlink: %zu bytes back in %.1f s; %d frames, %d spoilt, %d delayed, %d refused; "
                "%d answers, %d spoilt\n",
                got, time, peer.frames, peer.spoilt_frames, peer.delayed_frames,
                peer.refused_frames, peer.answers, peer.spoilt_answers);
}

/// From here on the module speaks this protocol.
void begin_protocol(const ModuleProcess& module, const char* command) {
    tell_module(module, command);
    ask_module(module, "time");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fputs("usage: line_soak PROGRAM BYTES [SEED]\n", stderr);
        return 2;
    }
    const unsigned seed = argc > 3 ? static_cast<unsigned>(std::stoul(argv[3])) : 1;
    std::mt19937 random(seed);
    std::printf("seed %u\n", seed);
    ModuleProcess module = begin_module_process(argv[1]);
    const Talk talk = make_talk(std::stoul(argv[2]), random);
    begin_protocol(module, "protocol 0");
    talk_plain(module, talk, random);
    begin_protocol(module, "protocol 1");
    talk_pactlink(module, talk, random);
    std::printf("%s\n", ask_module(module, "link").c_str());
    const int status = end_module_process(module);
    if (status != 0)
        std::fprintf(stderr, "line_soak: the module's process ended with %d\n", status);
    return status == 0 ? 0 : 1;
}
