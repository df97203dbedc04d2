// fuzz_companion.cpp: many peers at the companion's socket, with messages in pieces, half closes,
// answers that nobody reads, and a module that is full. The input is a list of steps. Each whole
// message is served once and in its order, and answered if its sender stays; nobody makes the
// program spin, and nobody keeps the next one out.

#include "base/folder_lock.h"
#include "host/bridge/bridge_packing.h"
#include "host/platform/instance/instance.h"
#include "host/platform/instance/instance_client.h"
#include "link/ground/pipes.h"
#include "tests/fuzz/steps.h"

#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace orvanel {
namespace {

constexpr std::size_t max_peers = 18;  // a few more than are held
constexpr std::size_t max_held = 16;
constexpr std::size_t max_queued = 300;  // messages of a peer
constexpr int max_turns = 1000;          // of the program, for what can be done at once
constexpr int rest_ms = 20;              // it looks again after less

struct Peer {
    int fd;
    std::deque<BridgeMessage> queued;  // to be sent
    std::size_t begun;                 // bytes sent of the first of them
    std::deque<std::uint32_t> served;  // numbers of the messages whose answers are to come
    std::vector<std::uint8_t> answer;  // the start of one
    bool closed;                       // its sending half
    bool gone;                         // the program has let it go
};

std::string folder;
std::vector<Peer> peers;
std::uint64_t delivered_least, delivered_most;  // bytes for the module: those of a peer that goes
                                                // without an end may arrive or not
bool orphans;  // somebody has gone whose messages may still wait for room
bool crowded;  // more have come than are held

void open_once() {
    if (instance_fd() >= 0) return;
    folder = std::filesystem::temp_directory_path() / "fuzz-companion-XXXXXX";
    check(mkdtemp(folder.data()) != nullptr);
    std::string fault;
    check(lock_folder(folder, fault) == FolderLock::taken);
    check(open_instance(false).empty());
    std::atexit([] {
        close_instance();
        std::filesystem::remove_all(folder);
    });
}

/// Serves until nothing is left to be done at once; that it ever is so is the point.
void serve(int wait_ms) {
    for (int turn = 0; turn < max_turns; ++turn) {
        pollfd ready{instance_fd(), POLLIN, 0};
        if (poll(&ready, 1, wait_ms) == 0) return;
        serve_instance();
        wait_ms = 0;
    }
    check(false);
}

/// How many bytes the module gets by a message.
std::size_t payload_of(std::uint32_t number) {
    return number > bridge_send && number <= bridge_send + bridge_piece ? number - bridge_send : 0;
}

void settle_answer(Peer& peer) {
    std::uint32_t answer = 0;
    for (std::size_t i = answer_size; i-- > 0;)
        answer = answer << 8 | peer.answer[i];
    peer.answer.clear();
    check(!peer.served.empty());
    const std::uint32_t number = peer.served.front();
    peer.served.pop_front();
    if (number == bridge_introduce) check(answer == 1);
    if (payload_of(number) > 0 || number == instance_activate) check(answer == 0);
}

void read_answers(Peer& peer, std::size_t max) {
    if (peer.gone || max == 0) return;
    std::array<std::uint8_t, 4096> bytes{};
    const ssize_t n = recv(peer.fd, bytes.data(), std::min(max, bytes.size()), MSG_DONTWAIT);
    peer.gone = n == 0 || (n < 0 && errno != EAGAIN);
    // Who is let go has ended and got all answers, or was one too many.
    if (peer.gone) check(crowded || (peer.closed && peer.served.empty()));
    for (ssize_t i = 0; i < n; ++i) {
        peer.answer.push_back(bytes[static_cast<std::size_t>(i)]);
        if (peer.answer.size() == answer_size) settle_answer(peer);
    }
}

/// Sends at most so many bytes of what is queued.
void send_some(Peer& peer, std::size_t max) {
    while (max > 0 && !peer.queued.empty() && !peer.closed && !peer.gone) {
        const auto bytes = message_bytes(peer.queued.front());
        const auto rest = std::span(bytes).subspan(peer.begun);
        const std::size_t wanted = std::min(max, rest.size());
        const ssize_t n = send(peer.fd, rest.data(), wanted, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (n <= 0) return;
        max -= static_cast<std::size_t>(n);
        peer.begun += static_cast<std::size_t>(n);
        if (peer.begun < message_size) continue;
        peer.served.push_back(peer.queued.front().number);
        delivered_most += payload_of(peer.served.back());
        if (!crowded) delivered_least += payload_of(peer.served.back());
        peer.queued.pop_front();
        peer.begun = 0;
    }
}

void queue_message(Peer& peer, std::uint8_t kind, std::uint8_t count) {
    constexpr std::array<std::uint32_t, 6> others{instance_activate, bridge_introduce,
                                                  bridge_status,     bridge_take_last,
                                                  bridge_take_key,   0xFFFFFFFF};
    const std::uint32_t number =
        kind % 12 < bridge_piece ? bridge_send + 1 + kind % 12 : others[kind % 12 - bridge_piece];
    for (int i = 0; i <= count && peer.queued.size() < max_queued; ++i)
        peer.queued.push_back({number, {kind, count}});
}

/// Goes without an end: what it sent last may be lost.
void hang_up(Peer& peer) {
    for (const std::uint32_t number : peer.served)
        delivered_least -= std::min<std::uint64_t>(delivered_least, payload_of(number));
    orphans = orphans || !peer.served.empty();
    close(peer.fd);
}

/// Both sides are this thread, so no peer may wait for an answer before it goes on.
void connect_peer() {
    if (peers.size() == max_peers) return;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    read_lock(folder).socket.copy(address.sun_path, sizeof address.sun_path - 1);
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    check(connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
    peers.push_back({fd, {}, 0, {}, {}, false, false});
    crowded = crowded || peers.size() > max_held;
}

/// One comes while no descriptor is free.
void starve() {
    connect_peer();
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{3, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    serve(0);
    setrlimit(RLIMIT_NOFILE, &before);
    serve(rest_ms);
}

/// Somebody else sends to the module, a little beyond the high mark at most.
void fill_module(int count) {
    const int room = std::max(high_mark + 100 - rx_count(), 0);
    const auto now = static_cast<std::size_t>(std::min(count, room));
    rx_pipe_put_block(std::vector<std::uint8_t>(now, 'x'));
    delivered_least += now;
    delivered_most += now;
}

void take_step(std::span<const std::uint8_t>& steps) {
    const std::uint8_t step = take(steps), which = take(steps), n = take(steps);
    if (step % 11 == 0 || peers.empty()) return connect_peer();
    const auto at = peers.begin() + which % std::ssize(peers);
    switch (step % 11) {
    case 1:
        return queue_message(*at, n, take(steps));
    case 2:
    case 3:
        return send_some(*at, n);
    case 4:
        return send_some(*at, std::size_t{n} * message_size);
    case 5:
        return read_answers(*at, std::size_t{n} * 16);
    case 6:
        at->closed = true;
        shutdown(at->fd, SHUT_WR);
        return;
    case 7:
        hang_up(*at);
        peers.erase(at);
        return;
    case 8:
        for (int i = 0; i < n * 320; ++i)
            rx_pipe_get();
        return;
    case 9:
        return tx_pipe_put_block(std::vector<std::uint8_t>(n, n));
    default:
        if (n == 0) return starve();
        return fill_module(n * 320);
    }
}

bool is_settled(const Peer& peer) { return peer.gone || (peer.served.empty() && !peer.closed); }

/// The module takes all, everybody reads: then each message has been served and answered, and who
/// has ended is let go.
void settle() {
    constexpr int patience = 500;
    for (int i = 0; i < patience; ++i) {
        clear_pipe(rx_pipe);
        serve(i == 0 ? 0 : rest_ms);
        for (Peer& peer : peers)
            read_answers(peer, static_cast<std::size_t>(-1));
        if (std::all_of(peers.begin(), peers.end(), is_settled) && !orphans) return;
        pollfd more{instance_fd(), POLLIN, 0};
        orphans = orphans && poll(&more, 1, rest_ms) > 0;
    }
    check(false);
}

/// All of them go, and one comes who is served.
void check_next_peer() {
    for (Peer& peer : peers)
        close(peer.fd);
    peers.clear();
    crowded = false;
    serve(0);
    connect_peer();
    queue_message(peers[0], 7, 0);
    send_some(peers[0], message_size);
    settle();
    check(!peers[0].gone);
    close(peers[0].fd);
    peers.clear();
    serve(0);
}

}  // namespace
}  // namespace orvanel

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    open_once();
    power_on_pipes();
    crowded = orphans = false;
    const std::uint64_t from = rx_pipe.head;
    delivered_least = delivered_most = 0;
    for (std::span steps(data, size); !steps.empty();) {
        take_step(steps);
        serve(0);
        check(rx_count() < pipe_size);
    }
    settle();
    const std::uint64_t delivered = rx_pipe.head - from;
    check(delivered <= delivered_most);
    check(delivered >= delivered_least);
    check_next_peer();
    return 0;
}
