// serial_name.h: the texts by which a user names what stands behind a COM port.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orvanel {

enum class SerialKind : std::uint8_t { tty, pty, tcp, stdio };

struct SerialName {
    SerialKind kind;
    std::string path;   // tty: the device; pty: the link to it, empty for none
    std::int32_t baud;  // tty: the speed that the text asks for, 0 if it names none
    std::string host;   // tcp: the address to listen on, in digits
    int port;           // tcp: 0..65535, 0 any that is free
};

/// Reads one of
///     PATH or PATH@BAUD     a serial device; there is a slash in it
///     pty or pty:LINK       a pseudo terminal, and a symbolic link to it
///     tcp:[HOST:]PORT       a port to listen on, on the loopback if there is no HOST, which is an
///                           address of this machine in digits (IPv6 in brackets) or "localhost"
///     stdio                 standard input and output
/// The result is empty on success, else what is wrong with the text, and `name` is undefined.
std::string parse_serial_name(std::string_view text, SerialName& name);

}  // namespace orvanel
