// serial_tcp.h: a line behind a TCP port that listens. One peer at a time: who comes while another
// is there is sent away; while there is none, what goes out is lost as on a loose wire. A peer that
// has only ended its sending still gets its answers, until the next one comes.

#pragma once

#include "host/platform/serial/serial_name.h"
#include "host/platform/serial/serial_wait.h"
#include "seam/platform.h"

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace orvanel {

struct TcpLine {
    int listener = -1;
    int peer = -1;
    std::string address;  // what the peer connects to: HOST:PORT
    std::chrono::steady_clock::time_point next_accept{};
};

std::string open_line(TcpLine& line, const SerialName& name);
void close_line(TcpLine& line);
int queued_in(TcpLine& line);
int queued_out(TcpLine& line);
int read(TcpLine& line, std::span<std::uint8_t> into);
int write(TcpLine& line, std::span<const std::uint8_t> data);
SerialWait wait_of(TcpLine& line, LineEvent event);
bool settle(TcpLine& line, LineEvent event, const SerialWait& wait);

}  // namespace orvanel
