#include "host/platform/instance/instance.h"

#include "base/bytes.h"
#include "base/files.h"
#include "base/folder_lock.h"
#include "host/bridge/bridge.h"
#include "host/platform/instance/instance_client.h"
#include "link/ground/pipes.h"
#include "seam/window_system.h"

#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/timerfd.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>

namespace orvanel {

namespace {

constexpr std::size_t max_clients = 16;
constexpr std::size_t messages_at_once = 64;  // of a connection, so that the others get their turn
constexpr int rest_ms = 10;                   // before a connection that waits is looked at again

struct Client {
    int fd = -1;              // -1: this row is free
    bool rests = false;       // the module has no room for its next message
    bool ended = false;       // it sends nothing more
    std::uint32_t watched{};  // what epoll watches it for, 0 nothing
    std::size_t in_size{};    // bytes of `in`; less than a message, unless it rests
    std::size_t out_size{};
    std::array<std::uint8_t, messages_at_once * message_size> in{};
    std::array<std::uint8_t, 2 * messages_at_once * answer_size> out{};
};

// What epoll says has happened: the index of a client, or one of these.
constexpr std::uint32_t listener_event = max_clients;
constexpr std::uint32_t rest_event = max_clients + 1;

std::string socket_path;  // empty while no messages are taken
constinit bool window_is_there = false;
constinit int epoll_fd = -1;
constinit int listener = -1;
constinit int rest_timer = -1;
constinit std::array<Client, max_clients> clients{};
constinit int companion = -1;  // the client that made itself known last, -1 none

void close_fd(int& fd) {
    if (fd >= 0) close(fd);
    fd = -1;
}

// The socket.

/// A folder that is ours and nobody else's.
bool is_private_folder(const std::string& path) {
    struct stat what {};
    return lstat(path.c_str(), &what) == 0 && S_ISDIR(what.st_mode) && what.st_uid == geteuid() &&
           (what.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

/// The name is made of what is locked, so it is short and no two folders share it.
std::string socket_name() { return "/orvanel42-" + lock_identity(); }

/// Where the socket goes: the user's run-time folder if it is private and its name short, else a
/// folder of ours in /tmp. Empty if somebody else has that one.
std::string choose_socket_path() {
    const char* run_time = std::getenv("XDG_RUNTIME_DIR");
    if (run_time != nullptr && run_time[0] == '/' && is_private_folder(run_time)) {
        std::string path = run_time + socket_name();
        if (path.size() < sizeof(sockaddr_un::sun_path)) return path;
    }
    const std::string folder = "/tmp/orvanel42-" + std::to_string(geteuid());
    mkdir(folder.c_str(), S_IRWXU);
    return is_private_folder(folder) ? folder + socket_name() : "";
}

bool watch(int fd, std::uint32_t event) {
    epoll_event wanted{};
    wanted.events = EPOLLIN;
    wanted.data.u32 = event;
    return fd >= 0 && epoll_ctl(epoll_fd, EPOLL_CTL_ADD, fd, &wanted) == 0;
}

bool bind_listener(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    listener = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (listener < 0) return false;
    unlink(path.c_str());  // who has left it is gone, or we had no lock
    return bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
           listen(listener, max_clients) == 0;
}

void rest() {
    itimerspec once{};
    once.it_value.tv_nsec = rest_ms * 1'000'000;
    timerfd_settime(rest_timer, 0, &once, nullptr);
}

// Connections.

int index_of(const Client& client) { return static_cast<int>(&client - clients.data()); }

void drop(Client& client) {
    close(client.fd);  // epoll forgets it with that
    if (companion == index_of(client)) {
        companion = -1;
        companion_gone();
    }
    client = {};
}

/// Has epoll watch for what we can do something about, and for nothing else: the end of a
/// connection that rests would come again and again.
void watch_client(Client& client) {
    std::uint32_t wanted = client.ended ? 0U : EPOLLIN;
    if (client.out_size > 0) wanted = EPOLLOUT;
    if (client.rests) wanted = 0;
    if (wanted == client.watched) return;
    epoll_event event{};
    event.events = wanted;
    event.data.u32 = static_cast<std::uint32_t>(index_of(client));
    const int change = client.watched == 0 ? EPOLL_CTL_ADD
                       : wanted == 0       ? EPOLL_CTL_DEL
                                           : EPOLL_CTL_MOD;
    client.watched = wanted;
    if (epoll_ctl(epoll_fd, change, client.fd, &event) != 0) drop(client);
}

/// False if the connection is gone.
bool send_answers(Client& client) {
    if (client.out_size == 0) return true;
    const ssize_t n = send(client.fd, client.out.data(), client.out_size, MSG_NOSIGNAL);
    if (n < 0) return errno == EAGAIN || errno == EINTR;
    const auto sent = static_cast<std::size_t>(n);
    std::copy(client.out.begin() + n, client.out.begin() + static_cast<ssize_t>(client.out_size),
              client.out.begin());
    client.out_size -= sent;
    return true;
}

std::uint32_t serve_message(const Client& client, BridgeMessage message) {
    if (message.number == instance_activate) {
        if (window_is_there) activate_window();
        return window_is_there ? 1 : 0;
    }
    if (makes_companion(message.number)) companion = index_of(client);
    return bridge_message(message);
}

/// Serves the whole messages that have come, in their order. There is room for their answers.
void serve_messages(Client& client) {
    std::size_t at = 0;
    client.rests = false;
    for (; client.in_size - at >= message_size; at += message_size) {
        const BridgeMessage message =
            message_of(std::span(client.in).subspan(at).first<message_size>());
        const bool for_module =
            message.number > bridge_send && message.number <= bridge_send + bridge_piece;
        client.rests = for_module && rx_count() > high_mark;
        if (client.rests) break;
        const std::uint32_t answer = serve_message(client, message);
        for (int shift = 0; shift < 32; shift += 8)
            client.out[client.out_size++] = low8(answer >> shift);
    }
    std::copy(client.in.begin() + static_cast<ssize_t>(at),
              client.in.begin() + static_cast<ssize_t>(client.in_size), client.in.begin());
    client.in_size -= at;
    if (client.rests) rest();
}

/// False if the connection is gone.
bool receive(Client& client) {
    const ssize_t n =
        recv(client.fd, client.in.data() + client.in_size, client.in.size() - client.in_size, 0);
    if (n < 0) return errno == EAGAIN || errno == EINTR;
    client.ended = n == 0;
    client.in_size += static_cast<std::size_t>(n);
    return true;
}

/// One turn of a connection. False if it is over.
bool turn(Client& client) {
    if (!send_answers(client)) return false;
    if (client.out_size > 0) return true;  // it has to read first
    serve_messages(client);
    if (!client.rests && !client.ended) {
        if (!receive(client)) return false;
        serve_messages(client);
    }
    if (!send_answers(client)) return false;
    return !client.ended || client.rests || client.out_size > 0;
}

void serve_client(Client& client) {
    if (client.fd < 0) return;
    if (turn(client))
        watch_client(client);
    else
        drop(client);
}

void accept_clients() {
    for (;;) {
        const int fd = accept4(listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (fd < 0 && (errno == EMFILE || errno == ENFILE)) {
            // It would be readable again at once, and stay so until a descriptor is free.
            epoll_ctl(epoll_fd, EPOLL_CTL_DEL, listener, nullptr);
            rest();
        }
        if (fd < 0) return;
        const auto free_row = std::find_if(clients.begin(), clients.end(),
                                           [](const Client& client) { return client.fd < 0; });
        if (free_row == clients.end() || !peer_is_trusted(fd)) {
            close(fd);
            continue;
        }
        free_row->fd = fd;
        watch_client(*free_row);
    }
}

void end_rest() {
    std::uint64_t times = 0;
    [[maybe_unused]] const ssize_t got = read(rest_timer, &times, sizeof times);
    watch(listener, listener_event);  // fails where it is watched already
    for (Client& client : clients)
        if (client.rests) serve_client(client);
}

}  // namespace

std::string open_instance(bool has_window) {
    if (!lock_is_told()) return {};
    const std::string path = choose_socket_path();
    if (path.empty()) return "there is no private folder for a socket; set XDG_RUNTIME_DIR";
    window_is_there = has_window;
    epoll_fd = epoll_create1(EPOLL_CLOEXEC);
    rest_timer = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    if (epoll_fd < 0 || !bind_listener(path) || !watch(listener, listener_event) ||
        !watch(rest_timer, rest_event)) {
        std::string fault = path + ": " + errno_text();
        close_instance();
        return fault;
    }
    socket_path = path;
    tell_socket(path);
    return {};
}

int instance_fd() { return epoll_fd; }

void serve_instance() {
    std::array<epoll_event, max_clients + 2> events{};
    const int n = epoll_wait(epoll_fd, events.data(), static_cast<int>(events.size()), 0);
    for (int i = 0; i < n; ++i) {
        const std::uint32_t event = events[static_cast<std::size_t>(i)].data.u32;
        if (event == listener_event)
            accept_clients();
        else if (event == rest_event)
            end_rest();
        else
            serve_client(clients[event]);
    }
}

void close_instance() {
    if (!socket_path.empty()) {
        tell_socket("");
        unlink(socket_path.c_str());
    }
    socket_path.clear();
    for (Client& client : clients)
        if (client.fd >= 0) drop(client);
    close_fd(listener);
    close_fd(rest_timer);
    close_fd(epoll_fd);
}

}  // namespace orvanel
