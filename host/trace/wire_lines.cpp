#include "host/trace/wire_lines.h"

#include "base/bytes.h"
#include "base/hex.h"
#include "link/ground/port.h"
#include "link/roof/pactlink.h"

#include <numeric>

namespace orvanel {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t frame_head = 2;                // start byte and length
constexpr std::size_t frame_frame = frame_head + 1;  // and the sum

bool is_start(std::uint8_t byte) { return byte == frame_data || byte == frame_control; }

std::string count_of(std::size_t n, const char* what) {
    return std::to_string(n) + ' ' + what + (n == 1 ? "" : "s");
}

std::string frame_words(Bytes frame) {
    const std::size_t n = frame.size() - frame_frame;
    if (frame[0] == frame_data) return "data frame with " + count_of(n, "byte");
    const char letter = n == 0 ? '?' : static_cast<char>(frame[frame_head] & 0xDF);
    const bool is_letter = letter >= 'A' && letter <= 'Z';
    return std::string("control frame ") + (is_letter ? letter : '?');
}

std::string sent_words(Bytes bytes) {
    if (!protocol_on.load()) return "plain bytes";
    if (bytes.size() == 1) return bytes[0] == frame_ack ? "acknowledged" : "refused";
    return "answer frame with " + count_of(bytes.size() - frame_frame, "byte");
}

/// Whether the bytes begin with a whole frame whose sum is right.
bool begins_with_frame(Bytes bytes) {
    if (bytes.size() < frame_frame || !is_start(bytes[0])) return false;
    const std::size_t end = frame_head + bytes[1];
    if (bytes.size() <= end) return false;
    return low8(std::accumulate(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(end),
                                0)) == bytes[end];
}

std::string hex_byte(std::uint8_t byte) { return hex_digits(byte, 2); }

}  // namespace

std::string wire_words(const WireEvent& event) {
    switch (event.kind) {
    case WireKind::plain_in:
    case WireKind::stray:
        return "plain bytes";
    case WireKind::sent:
        return sent_words(event.bytes);
    case WireKind::frame_in:
        return frame_words(event.bytes) +
               (event.fate == FrameFate::not_selected ? ", this module isn't selected" : "");
    case WireKind::timed_out:
        return "time limit";
    }
    return "";
}

std::vector<Finding> wire_findings(const WireEvent& event) {
    if (event.kind == WireKind::timed_out)
        return {{FindingKind::frame_cut, "the time limit ran out within a frame: it was dropped"}};
    if (event.kind == WireKind::stray)
        return {
            {FindingKind::plain_on_frames,
             "plain bytes came on a line that takes frames, and nobody reads them: send frames, "
             "or choose plain bytes (protocol 0)"}};
    if (event.lost > 0)
        return {{FindingKind::bytes_lost,
                 count_of(event.lost, "byte") + " had no room and were lost: RTS was off already"}};
    if (event.kind == WireKind::plain_in && begins_with_frame(event.bytes))
        return {{FindingKind::frame_on_plain,
                 "a frame came on a line that takes plain bytes: choose Pactlink (protocol 1)"}};
    if (event.kind == WireKind::frame_in && event.fate == FrameFate::wrong_sum)
        return {{FindingKind::frame_sum, "the frame ends with the sum " +
                                             hex_byte(event.bytes.back()) + " and its bytes have " +
                                             hex_byte(event.sum)}};
    if (event.kind == WireKind::frame_in && event.fate == FrameFate::no_room)
        return {{FindingKind::frame_room, "the frame has no room in the module's input: wait, and "
                                          "send it again"}};
    return {};
}

}  // namespace orvanel
