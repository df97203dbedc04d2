#include "link/feeds/feeds.h"

#include "base/files.h"
#include "link/ground/pipes.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

namespace orvanel {

namespace {

constinit std::int64_t left = 0;
constinit ByteSource source{.origin = ByteOrigin::feed};  // of the next byte
constinit std::FILE* feed_file = nullptr;
constinit std::span<const std::uint8_t> feed_memory{};
constinit std::array<std::uint8_t, feed_chunk> staging{};

/// The length of an open file, rewound to its start; 0 if it can't be found out.
std::int64_t length_of(std::FILE* file) {
    if (std::fseek(file, 0, SEEK_END) != 0) return 0;
    const long length = std::ftell(file);
    std::rewind(file);
    return std::max(length, 0L);
}

void put(std::span<const std::uint8_t> data) {
    rx_pipe_put_block(data, source);
    source.offset += static_cast<std::uint32_t>(data.size());
}

void begin_feed() {
    stop_feed();
    ++source.number;
    source.offset = 0;
}

/// Moves up to `n` bytes of the file. A file that has shrunk meanwhile ends its feed.
void drain_file(std::size_t n) {
    const std::size_t got = std::fread(staging.data(), 1, n, feed_file);
    put(std::span(staging).first(got));
    left = got < n ? 0 : left - static_cast<std::int64_t>(n);
}

void drain_memory(std::size_t n) {
    put(feed_memory.first(n));
    feed_memory = feed_memory.subspan(n);
    left -= static_cast<std::int64_t>(n);
}

}  // namespace

std::int64_t feed_left() { return left; }
std::uint32_t feed_number() { return source.number; }

void start_feed_memory(std::span<const std::uint8_t> data) {
    begin_feed();
    feed_memory = data;
    left = static_cast<std::int64_t>(data.size());
}

std::string_view unquoted(std::string_view path) {
    const auto is_quote = [](char c) { return c == '"' || c == '\''; };
    if (path.empty() || !is_quote(path.front())) return path;
    path.remove_prefix(1);
    if (!path.empty() && is_quote(path.back())) path.remove_suffix(1);
    return path;
}

void start_feed_of(std::string_view path) {
    begin_feed();
    const std::string name(path);
    if (!is_plain_file(name)) return;
    feed_file = std::fopen(name.c_str(), "rb");
    if (feed_file == nullptr) return;
    std::setvbuf(feed_file, nullptr, _IONBF, 0);  // `staging` is the buffer
    left = length_of(feed_file);
    if (left == 0) stop_feed();
}

void start_feed_file(std::string_view path) { start_feed_of(unquoted(path)); }

void drain_feed() {
    while (left > 0 && rx_count() <= high_mark) {
        const auto n = static_cast<std::size_t>(std::min<std::int64_t>(left, feed_chunk));
        if (feed_file != nullptr)
            drain_file(n);
        else
            drain_memory(n);
    }
    if (left == 0) stop_feed();
}

void stop_feed() {
    if (feed_file != nullptr) std::fclose(feed_file);
    feed_file = nullptr;
    feed_memory = {};
    left = 0;
}

}  // namespace orvanel
