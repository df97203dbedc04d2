#include "host/scenario/comparison.h"

#include "base/hex.h"

#include <algorithm>
#include <string_view>

namespace orvanel {

namespace {

constexpr int max_columns = 60;  // characters of each drawing
constexpr int max_rows = 20;
constexpr std::size_t bytes_shown = 32;  // of each string
constexpr std::size_t bytes_before = 8;  // of them before the first difference

std::string dots_of_row(const BitPlane& picture, int y, int x1, int x2) {
    std::string row;
    for (int x = x1; x <= x2; ++x)
        row += plane_get(picture.data(), x, y) ? '#' : '.';
    return row;
}

std::string place(int x, int y) { return std::to_string(x) + ", " + std::to_string(y); }

std::string drawing(const Difference& d, const BitPlane& expected, const BitPlane& actual) {
    const int x2 = std::min(d.x2, d.x1 + max_columns - 1);
    const int y2 = std::min(d.y2, d.y1 + max_rows - 1);
    std::string head = "expected";
    head.resize(std::max<std::size_t>(head.size(), static_cast<std::size_t>(x2 - d.x1 + 1)), ' ');
    std::string text = "\n    " + head + "   actual";
    if (x2 < d.x2 || y2 < d.y2)
        text += "   (cut to " + place(d.x1, d.y1) + " to " + place(x2, y2) + ")";
    for (int y = d.y1; y <= y2; ++y) {
        std::string left = dots_of_row(expected, y, d.x1, x2);
        left.resize(head.size(), ' ');
        text += "\n    " + left + "   " + dots_of_row(actual, y, d.x1, x2);
    }
    return text;
}

/// One string from `start`, with dots where more of it stands.
std::string excerpt(std::span<const std::uint8_t> bytes, std::size_t start) {
    if (bytes.empty()) return " (no byte)";
    start = std::min(start, bytes.size());
    const std::size_t n = std::min(bytes.size() - start, bytes_shown);
    const std::span<const std::uint8_t> part = bytes.subspan(start, n);
    std::string text = (start > 0 ? " ..." : "") + hex_of(part);
    if (start + n < bytes.size()) text += " ...";
    const auto is_readable = [](std::uint8_t b) { return b >= ' ' && b <= '~'; };
    if (n > 0 && std::all_of(part.begin(), part.end(), is_readable))
        text += "  \"" + std::string(part.begin(), part.end()) + "\"";
    return text;
}

}  // namespace

Difference compare_pictures(const BitPlane& expected, const BitPlane& actual) {
    Difference d{};
    for (int y = 0; y < screen_height; ++y)
        for (int x = 0; x < screen_width; ++x) {
            if (plane_get(expected.data(), x, y) == plane_get(actual.data(), x, y)) continue;
            if (d.dots++ == 0) d = {1, x, y, x, y, x, y};
            d.x1 = std::min(d.x1, x);
            d.x2 = std::max(d.x2, x);
            d.y2 = y;
        }
    return d;
}

std::string explain_difference(const Difference& d, const BitPlane& expected,
                               const BitPlane& actual) {
    const bool wanted = plane_get(expected.data(), d.first_x, d.first_y);
    return std::to_string(d.dots) + (d.dots == 1 ? " dot differs" : " dots differ") +
           " in the rectangle " + place(d.x1, d.y1) + " to " + place(d.x2, d.y2) +
           "; the first is " + place(d.first_x, d.first_y) +
           (wanted ? ", clear and not set" : ", set and not clear") + drawing(d, expected, actual);
}

std::string explain_bytes(std::span<const std::uint8_t> expected,
                          std::span<const std::uint8_t> actual) {
    const auto parted =
        std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
    const auto at = static_cast<std::size_t>(parted.first - expected.begin());
    const std::size_t start = at > bytes_before ? at - bytes_before : 0;
    return std::to_string(expected.size()) + (expected.size() == 1 ? " byte" : " bytes") +
           " expected, " + std::to_string(actual.size()) + " there, different from byte " +
           std::to_string(at + 1) + " on\n    expected" + excerpt(expected, start) +
           "\n    actual  " + excerpt(actual, start);
}

}  // namespace orvanel
