#include "host/platform/serial/serial_tcp.h"

#include "base/files.h"

#include <arpa/inet.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <netdb.h>

namespace orvanel {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr int backlog = 4;
constexpr milliseconds retry_time{250};

void set_option(int fd, int level, int option, int value) {
    (void)setsockopt(fd, level, option, &value, sizeof value);
}

/// A listening socket, or -1 with errno set.
int listen_on(const addrinfo& place) {
    const int fd = socket(place.ai_family, place.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (fd < 0) return fd;
    // Else the port of a program that has just ended would be taken for a minute.
    set_option(fd, SOL_SOCKET, SO_REUSEADDR, 1);
    // A byte that the peer marks as urgent is one like the others. Its peer's socket takes this
    // from the listener, since the byte may be there before the peer is taken.
    set_option(fd, SOL_SOCKET, SO_OOBINLINE, 1);
    if (bind(fd, place.ai_addr, place.ai_addrlen) == 0 && listen(fd, backlog) == 0) return fd;
    const int fault = errno;
    close(fd);
    errno = fault;
    return -1;
}

std::string address_of(int fd, const std::string& host) {
    sockaddr_storage place{};
    socklen_t size = sizeof place;
    std::array<char, NI_MAXSERV> port{};
    if (getsockname(fd, reinterpret_cast<sockaddr*>(&place), &size) != 0 ||
        getnameinfo(reinterpret_cast<sockaddr*>(&place), size, nullptr, 0, port.data(), port.size(),
                    NI_NUMERICSERV) != 0)
        return host;
    const bool six = host.find(':') != std::string::npos;
    return (six ? "[" + host + "]" : host) + ":" + port.data();
}

void drop_peer(TcpLine& line) {
    close(line.peer);
    line.peer = -1;
}

void take_peer(TcpLine& line, int fd) {
    if (line.peer >= 0) drop_peer(line);
    line.peer = fd;
    set_option(fd, IPPROTO_TCP, TCP_NODELAY, 1);
    // A peer whose machine has gone without a word would keep the line for ever: gone after 25 s.
    set_option(fd, SOL_SOCKET, SO_KEEPALIVE, 1);
    set_option(fd, IPPROTO_TCP, TCP_KEEPIDLE, 10);
    set_option(fd, IPPROTO_TCP, TCP_KEEPINTVL, 5);
    set_option(fd, IPPROTO_TCP, TCP_KEEPCNT, 3);
}

int unread(const TcpLine& line) {
    int count = 0;
    return line.peer >= 0 && ioctl(line.peer, FIONREAD, &count) == 0 ? count : 0;
}

/// What there is at the other end.
enum class Peer : std::uint8_t {
    none,
    there,
    leaving,  // it has ended its sending, and what it sent isn't read yet
    done,     // it has ended its sending
};

/// Lets a peer go that is wholly gone and read to its end.
Peer look_at_peer(TcpLine& line) {
    if (line.peer < 0) return Peer::none;
    const short ends = poll_now(line.peer, POLLRDHUP);
    if (ends == 0) return Peer::there;
    if (unread(line) > 0) return Peer::leaving;
    if ((ends & (POLLHUP | POLLERR)) == 0) return Peer::done;
    drop_peer(line);
    return Peer::none;
}

/// Takes the peer that wants to connect, or refuses it. While one is leaving it has to wait.
void accept_peer(TcpLine& line) {
    if (steady_clock::now() < line.next_accept) return;
    for (Peer peer = look_at_peer(line); peer != Peer::leaving; peer = look_at_peer(line)) {
        const int fd = accept4(line.listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (fd < 0) {
            if (errno == EINTR || errno == ECONNABORTED) continue;
            // Without a descriptor to spare he stays in the queue, which would tell of him without
            // end.
            if (errno != EAGAIN) line.next_accept = steady_clock::now() + retry_time;
            return;
        }
        if (peer == Peer::there)
            close(fd);
        else
            take_peer(line, fd);
    }
}

}  // namespace

std::string open_line(TcpLine& line, const SerialName& name) {
    addrinfo hints{};
    hints.ai_flags = AI_PASSIVE | AI_NUMERICHOST | AI_NUMERICSERV;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* places = nullptr;
    const int fault =
        getaddrinfo(name.host.c_str(), std::to_string(name.port).c_str(), &hints, &places);
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owner(places, freeaddrinfo);
    const std::string where = name.host + " port " + std::to_string(name.port) + ": ";
    if (fault != 0) return where + gai_strerror(fault);
    line.listener = listen_on(*places);
    if (line.listener < 0) return where + errno_text();
    line.address = address_of(line.listener, name.host);
    return {};
}

void close_line(TcpLine& line) {
    if (line.peer >= 0) close(line.peer);
    if (line.listener >= 0) close(line.listener);
}

int queued_in(TcpLine& line) {
    const int count = unread(line);
    if (count > 0) return count;
    if (look_at_peer(line) != Peer::there) accept_peer(line);
    return unread(line);
}

int queued_out(TcpLine& line) {
    int count = 0;
    return line.peer >= 0 && ioctl(line.peer, SIOCOUTQ, &count) == 0 ? count : 0;
}

int read(TcpLine& line, std::span<std::uint8_t> into) {
    if (line.peer < 0) return 0;
    const ssize_t bytes = recv(line.peer, into.data(), into.size(), 0);
    return bytes < 0 ? 0 : static_cast<int>(bytes);
}

int write(TcpLine& line, std::span<const std::uint8_t> data) {
    const int all = static_cast<int>(data.size());
    if (line.peer < 0) return all;
    const ssize_t bytes = send(line.peer, data.data(), data.size(), MSG_NOSIGNAL);
    if (bytes >= 0) return static_cast<int>(bytes);
    return errno == EAGAIN || errno == EINTR ? 0 : all;
}

SerialWait wait_of(TcpLine& line, LineEvent event) {
    SerialWait wait = watch_nothing;
    const Peer peer = look_at_peer(line);
    if (event == LineEvent::input) wait.ready = unread(line) > 0;
    if (event == LineEvent::output) wait.ready = peer == Peer::none;
    // One that has ended would tell of that without end; so would one that is leaving.
    if (peer == Peer::there && event == LineEvent::input) wait.peer = {line.peer, POLLIN, 0};
    if (peer != Peer::none && event == LineEvent::output) wait.peer = {line.peer, POLLOUT, 0};
    const auto shut = std::chrono::ceil<milliseconds>(line.next_accept - steady_clock::now());
    if (shut.count() > 0)
        wait.look_ms = static_cast<int>(shut.count());
    else if (peer != Peer::leaving)
        wait.listener = {line.listener, POLLIN, 0};
    return wait;
}

bool settle(TcpLine& line, LineEvent event, const SerialWait& wait) {
    if (wait.listener.revents != 0) accept_peer(line);
    if (event == LineEvent::input) return unread(line) > 0;
    return wait.peer.revents != 0;
}

}  // namespace orvanel
