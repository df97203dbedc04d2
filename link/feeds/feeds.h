// feeds.h: a file or a block of memory on its way into rx_pipe, one at a time. All of it belongs
// to the host's main thread.

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace orvanel {

constexpr int feed_chunk = 4000;  // bytes that a feed moves at once

/// Bytes that the feed still has to deliver, 0 for no feed.
std::int64_t feed_left();

/// The number of the feed armed last, from 1 on, by which a trace names its bytes.
std::uint32_t feed_number();

/// Arms a feed that borrows its memory: it stays valid until feed_left is 0 or another feed is
/// armed.
void start_feed_memory(std::span<const std::uint8_t> data);

/// A path from a command line or a companion may arrive quoted: without one quote at each end.
std::string_view unquoted(std::string_view path);

/// Arms a feed of a plain file. One that can't be opened ends the running feed all the same, and
/// nothing is said. The path is taken as it comes, or may stand in quotes.
void start_feed_of(std::string_view path);
void start_feed_file(std::string_view path);

/// Moves feed bytes into rx_pipe, chunk by chunk, until the pipe holds more than the high mark.
void drain_feed();

/// Closes a file feed that is running.
void stop_feed();

}  // namespace orvanel
