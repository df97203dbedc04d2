// The header for the firmware of a device: each command gives the bytes that the kit compiler makes
// of the same command, bad input leaves whole commands alone, and frames go through the module.

#include "base/bytes.h"
#include "kit/commands.h"
#include "tests/device/every_command.h"

#include <gtest/gtest.h>

#include <array>
#include <numeric>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace orvanel {
namespace {

std::vector<called_command> every_command() {
    std::size_t count = 0;
    const called_command* calls = call_every_command(&count);
    return {calls, calls + count};
}

TEST(Device, EachCommandIsWhatTheKitCompilerMakesOfIt) {
    const Names no_names;
    const Assembly assembly{&no_names, [](int) { return Bytes(); }};
    std::set<std::string> letters;
    for (const called_command& call : every_command()) {
        Bytes bytes;
        assemble_line({"", 0, call.line}, assembly, bytes);
        EXPECT_TRUE(call.written) << call.line;
        EXPECT_EQ(Bytes(call.bytes, call.bytes + call.size), bytes) << call.line;
        const std::string line = call.line;
        letters.insert(line.substr(0, line.find(' ', 4)));
    }
    EXPECT_EQ(letters.size(), all_forms().size());
}

TEST(Device, WhatCannotBeSaidLeavesTheOtherCommandsWhole) {
    const std::vector<std::uint8_t> both{0x1B, 'D', 'L', 0x1B, 'D', 'E'};
    for (const odd_call call :
         {number_too_large, number_below_zero, text_with_line_feed, text_missing, text_without_room,
          picture_cut, too_many_bytes, frame_too_long}) {
        std::array<std::uint8_t, 300> buffer{};
        std::size_t length = 0;
        const std::size_t size = call == text_without_room ? 20 : buffer.size();
        EXPECT_FALSE(call_with(call, buffer.data(), size, &length)) << call;
        EXPECT_EQ(std::vector(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(length)),
                  both)
            << call;
    }
}

TEST(Device, TheLastByteOfABufferIsUsed) {
    std::array<std::uint8_t, 6> buffer{};
    std::size_t length = 0;
    call_with(number_too_large, buffer.data(), buffer.size(), &length);
    EXPECT_EQ(length, 6u);
    call_with(number_too_large, buffer.data(), 5, &length);
    EXPECT_EQ(length, 3u);
}

TEST(Device, FramesAreThoseOfTheProtocol) {
    std::array<std::uint8_t, 64> frames{};
    const std::size_t size = frames_by_function(frames.data());
    const std::vector<std::uint8_t> expected{0x11, 3,    '#', 'T',  'A',  0xCC,  // data
                                             0x12, 1,    'I', 0x5C, 0x12, 1,
                                             'S',  0x66,                         // questions
                                             0x12, 1,    'R', 0x65,              //
                                             0x12, 3,    'D', 64,   200,  0x61,  // packets
                                             0x12, 1,    'P', 0x63,              //
                                             0x12, 3,    'A', 'D',  7,    0xA1,  // addresses
                                             0x12, 3,    'A', 'S',  7,    0xB0};
    EXPECT_EQ(std::vector(frames.begin(), frames.begin() + static_cast<std::ptrdiff_t>(size)),
              expected);
}

TEST(Device, RepliesAndAnswersAreReadByteByByte) {
    Bytes bytes{0x06, 0x15, 0x00};  // ACK, NAK, noise
    const auto append_frame = [&](std::uint8_t type, const Bytes& payload) {
        Bytes frame{type, low8(static_cast<int>(payload.size()))};
        frame.insert(frame.end(), payload.begin(), payload.end());
        frame.push_back(low8(std::accumulate(frame.begin(), frame.end(), 0)));
        bytes.insert(bytes.end(), frame.begin(), frame.end());
    };
    append_frame(0x12, {0, 0xFA});
    append_frame(0x11, {});
    append_frame(0x11, {'?', 0x1B, 'A', 1, 65, 0x1B, 'T'});  // an answer, and the next begun
    append_frame(0x11, {0});
    append_frame(0x11, {'x'});
    bytes.back() ^= 1;
    std::array<char, 64> seen{};
    read_replies(bytes.data(), bytes.size(), seen.data());
    EXPECT_STREQ(seen.data(), "+-cddA1dT0!");
}

}  // namespace
}  // namespace orvanel
