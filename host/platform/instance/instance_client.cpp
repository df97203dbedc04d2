#include "host/platform/instance/instance_client.h"

#include "base/bytes.h"
#include "base/files.h"
#include "base/folder_lock.h"

#include <climits>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <thread>
#include <vector>

namespace orvanel {

namespace {

constexpr std::chrono::milliseconds connect_step{10};  // between two tries to be let in

// A message without a meaning of its own, which is answered as any.
constexpr BridgeMessage are_you_there{0, {0, 0}};

using Clock = std::chrono::steady_clock;

/// What is left until then, for poll.
int ms_until(Deadline end) {
    if (end == Deadline::max()) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, INT_MAX));
}

/// Waits until the connection is ready for `events`. False if the patience has ended.
bool wait_for(int connection, short events, Patience patience) {
    std::array<pollfd, 2> fds{pollfd{connection, events, 0}, pollfd{patience.stop_fd, POLLIN, 0}};
    int n = 0;
    do
        n = poll(fds.data(), fds.size(), ms_until(patience.end));
    while (n < 0 && errno == EINTR);
    return n > 0 && fds[1].revents == 0;
}

bool send_all(int connection, std::span<const std::uint8_t> bytes, Patience patience) {
    while (!bytes.empty()) {
        if (!wait_for(connection, POLLOUT, patience)) return false;
        const ssize_t n = send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (n < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (n <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(n));
    }
    return true;
}

bool receive_all(int connection, std::span<std::uint8_t> bytes, Patience patience) {
    while (!bytes.empty()) {
        if (!wait_for(connection, POLLIN, patience)) return false;
        const ssize_t n = recv(connection, bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (n < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (n <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(n));
    }
    return true;
}

enum class Entry : std::uint8_t { made, refused, full };

/// Connects. While the other side takes in nobody its queue fills, and a connection that waits for
/// a place in it would wait for ever.
Entry enter(int connection, const sockaddr_un& address, Deadline end) {
    while (connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        if (errno == EINTR) continue;
        if (errno != EAGAIN) return Entry::refused;
        if (Clock::now() >= end) return Entry::full;
        std::this_thread::sleep_for(connect_step);
    }
    return Entry::made;
}

std::uint32_t word_of(std::span<const std::uint8_t> bytes) {
    return std::uint32_t{le16(bytes[0], bytes[1])} | std::uint32_t{le16(bytes[2], bytes[3])} << 16;
}

/// Whether somebody answers at the other end of a connection that the system has made.
bool is_there(int connection, Deadline end) {
    std::uint32_t answer = 0;
    return ask_instance(connection, {&are_you_there, 1}, {&answer, 1}, {end, -1});
}

}  // namespace

bool peer_is_trusted(int connection) {
    ucred peer{};
    socklen_t size = sizeof peer;
    if (getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return false;
    return peer.uid == geteuid() || peer.uid == 0;
}

int connect_to_instance(const std::string& folder, Deadline end, std::string& fault) {
    const auto [path, process] = read_lock(folder);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    fault = "no program that takes messages runs in " + folder;
    if (path.empty() || path.size() >= sizeof address.sun_path) return -1;
    std::memcpy(address.sun_path, path.data(), path.size());
    const int connection = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (connection < 0) {
        fault = errno_text();
        return -1;
    }
    const Entry entry = enter(connection, address, end);
    if (entry == Entry::made && !peer_is_trusted(connection))
        fault = path + " belongs to another user";
    else if (entry == Entry::full || (entry == Entry::made && !is_there(connection, end)))
        fault = "the program that runs in " + folder + " (process " + process +
                ") doesn't answer; has it been stopped?";
    else if (entry == Entry::made)
        fault.clear();
    if (fault.empty()) return connection;
    close(connection);
    return -1;
}

std::array<std::uint8_t, message_size> message_bytes(BridgeMessage message) {
    std::array<std::uint8_t, message_size> bytes{};
    std::size_t at = 0;
    for (const std::uint32_t word :
         {message.number, message.parameters.first, message.parameters.second})
        for (int shift = 0; shift < 32; shift += 8)
            bytes[at++] = low8(word >> shift);
    return bytes;
}

BridgeMessage message_of(std::span<const std::uint8_t> bytes) {
    return {word_of(bytes), {word_of(bytes.subspan(4)), word_of(bytes.subspan(8))}};
}

bool ask_instance(int connection, std::span<const BridgeMessage> messages,
                  std::span<std::uint32_t> answers, Patience patience) {
    // So many at once that neither side ever waits for the other to read.
    constexpr std::size_t max_at_once = 64;
    std::fill(answers.begin(), answers.end(), 0U);
    while (!messages.empty()) {
        const std::size_t n = std::min(messages.size(), max_at_once);
        std::vector<std::uint8_t> bytes;
        for (const BridgeMessage& message : messages.first(n)) {
            const auto packed = message_bytes(message);
            bytes.insert(bytes.end(), packed.begin(), packed.end());
        }
        if (!send_all(connection, bytes, patience)) return false;
        for (std::size_t i = 0; i < n; ++i) {
            std::array<std::uint8_t, answer_size> answer{};
            if (!receive_all(connection, answer, patience)) return false;
            answers[i] = word_of(answer);
        }
        messages = messages.subspan(n);
        answers = answers.subspan(n);
    }
    return true;
}

HandOver hand_over(const std::string& folder, const std::string& file, Deadline end,
                   std::string& fault) {
    const int connection = connect_to_instance(folder, end, fault);
    if (connection < 0) return HandOver::nobody;
    std::vector<BridgeMessage> messages{{instance_activate, {0, 0}}};
    if (!file.empty() && file.size() <= max_name_length)
        for (const BridgeMessage& message : bridge_open_messages(file))
            messages.push_back(message);
    std::vector<std::uint32_t> answers(messages.size());
    // Only a program with a window takes over what was meant for one.
    bool done = ask_instance(connection, std::span(messages).first(1), answers, {end, -1});
    const bool has_window = done && answers[0] != 0;
    if (has_window) done = ask_instance(connection, messages, answers, {end, -1});
    close(connection);
    if (!done) return HandOver::nobody;
    if (!has_window)
        fault = folder + " is in use by a program without a window (process " +
                read_lock(folder).process + ")";
    else if (file.size() > max_name_length)
        fault = "the path is too long to be handed to the program that runs already, " +
                std::to_string(max_name_length) + " bytes at most: " + file;
    else
        return HandOver::done;
    return HandOver::failed;
}

}  // namespace orvanel
