#include "host/platform/serial/serial_name.h"

#include <arpa/inet.h>

#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <system_error>

namespace orvanel {

namespace {

constexpr int max_tcp_port = 65535;
constexpr std::string_view loopback = "127.0.0.1";
constexpr std::string_view pty_prefix = "pty:";
constexpr std::string_view tcp_prefix = "tcp:";

/// The whole text as a decimal number of at most `max`.
std::optional<int> number_of(std::string_view text, int max) {
    int number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, fault] = std::from_chars(text.data(), end, number);
    if (fault != std::errc{} || stop != end || number < 0 || number > max) return {};
    return number;
}

bool is_address(const std::string& text) {
    std::array<unsigned char, sizeof(in6_addr)> bytes{};
    return inet_pton(AF_INET, text.c_str(), bytes.data()) == 1 ||
           inet_pton(AF_INET6, text.c_str(), bytes.data()) == 1;
}

std::string parse_tcp(std::string_view text, SerialName& name) {
    const std::size_t colon = text.rfind(':');
    std::string_view host = loopback;
    if (colon != std::string_view::npos) {
        host = text.substr(0, colon);
        text.remove_prefix(colon + 1);
        if (host == "localhost") host = loopback;
        if (host.starts_with('[') && host.ends_with(']')) {
            host.remove_prefix(1);
            host.remove_suffix(1);
        }
    }
    name.host = host;
    if (!is_address(name.host))
        return "\"" + name.host + "\" is no address in digits, such as 127.0.0.1 or [::1]";
    const std::optional<int> port = number_of(text, max_tcp_port);
    if (!port) return "\"" + std::string{text} + "\" is no port number, 0 to 65535";
    name.port = *port;
    return {};
}

std::string parse_device(std::string_view text, SerialName& name) {
    if (const std::size_t at = text.rfind('@'); at != std::string_view::npos) {
        const std::string_view speed = text.substr(at + 1);
        const auto baud = number_of(speed, std::numeric_limits<int>::max());
        if (!baud || *baud == 0) return "\"" + std::string{speed} + "\" is no speed in baud";
        name.baud = *baud;
        text = text.substr(0, at);
    }
    // A slip of the pen in one of the words below is no device of that name.
    if (text.find('/') == std::string_view::npos)
        return "it is none of /PATH/OF/DEVICE[@BAUD], pty[:LINK], tcp:[HOST:]PORT, stdio";
    name.path = text;
    return {};
}

std::string parse(std::string_view text, SerialName& name) {
    if (text.find('\0') != std::string_view::npos) return "there is a zero byte in it";
    if (text == "stdio") {
        name.kind = SerialKind::stdio;
        return {};
    }
    if (text == "pty" || text.starts_with(pty_prefix)) {
        name.kind = SerialKind::pty;
        if (text == pty_prefix) return "there is no name of a link behind pty:";
        if (text != "pty") name.path = text.substr(pty_prefix.size());
        return {};
    }
    if (text.starts_with(tcp_prefix)) {
        name.kind = SerialKind::tcp;
        return parse_tcp(text.substr(tcp_prefix.size()), name);
    }
    name.kind = SerialKind::tty;
    return parse_device(text, name);
}

}  // namespace

std::string parse_serial_name(std::string_view text, SerialName& name) {
    name = {};
    const std::string fault = parse(text, name);
    if (fault.empty()) return {};
    return "serial line \"" + std::string{text} + "\": " + fault;
}

}  // namespace orvanel
