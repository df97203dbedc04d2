// line_support.h: a module on a line, with the test as its peer.

#pragma once

#include "base/bytes.h"
#include "firmware/core/ground/requests.h"
#include "firmware/store/ground/macro.h"
#include "link/ground/pipes.h"
#include "link/ground/port.h"
#include "link/roof/com_port.h"
#include "link/roof/link_thread.h"
#include "link/roof/pactlink.h"
#include "tests/support/fake_line.h"
#include "tests/support/fake_platform.h"
#include "tests/support/stream.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <utility>

namespace orvanel {

/// As at program start, with the port COM1 open at 9600 baud.
class OnLine : public testing::Test {
  protected:
    void SetUp() override {
        close_link();
        fresh_platform();
        fresh_line();
        shutdown_requested = false;
        configured_address = 7;
        power_on_link();
        power_on_pipes();
        auto_macro_mode = 0;
        answer_frame = {};
        com_port = 0;
        com_baud = 9600;
        com_select(1, 9600);
        link_turn();
    }

    void TearDown() override { close_link(); }

    /// What the module has sent.
    static Bytes sent() { return std::exchange(fake_line.out, {}); }

    static void receive(const Bytes& data) {
        fake_line.in.insert(fake_line.in.end(), data.begin(), data.end());
    }

    /// The peer sends this; what the module sends by the time that it has read it.
    static Bytes answer_to(const Bytes& data) {
        receive(data);
        do {
            link_turn();
        } while (!fake_line.in.empty());
        return sent();
    }

    /// What the firmware would read.
    static Bytes delivered() {
        Bytes bytes;
        for (int byte = rx_pipe_get(); byte >= 0; byte = rx_pipe_get())
            bytes.push_back(static_cast<std::uint8_t>(byte));
        return bytes;
    }
};

/// A whole frame around this payload.
inline Bytes frame(std::uint8_t start, const Bytes& payload) {
    Bytes bytes{start, static_cast<std::uint8_t>(payload.size())};
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    std::uint8_t sum = 0;
    for (const std::uint8_t byte : bytes)
        sum = static_cast<std::uint8_t>(sum + byte);
    bytes.push_back(sum);
    return bytes;
}

inline Bytes data_frame(const Bytes& payload) { return frame(0x11, payload); }
inline Bytes control_frame(const Bytes& payload) { return frame(0x12, payload); }

inline Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

const Bytes ack{0x06};
const Bytes nak{0x15};
const Bytes silence{};

}  // namespace orvanel
