#include "base/pbm.h"

#include <algorithm>
#include <string_view>

namespace orvanel {

namespace {

/// Steps over white space and comments.
void skip_space(std::span<const std::uint8_t>& rest) {
    constexpr std::string_view space = " \t\n\v\f\r";
    while (!rest.empty()) {
        if (rest[0] == '#') {
            const auto end = std::find(rest.begin(), rest.end(), '\n');
            rest = rest.subspan(static_cast<std::size_t>(end - rest.begin()));
        } else if (space.find(static_cast<char>(rest[0])) != std::string_view::npos) {
            rest = rest.subspan(1);
        } else {
            return;
        }
    }
}

/// The next number, -1 if none is there.
std::int64_t take_number(std::span<const std::uint8_t>& rest) {
    constexpr std::int64_t beyond_any_picture = 1'000'000;
    skip_space(rest);
    std::int64_t value = -1;
    for (; !rest.empty() && rest[0] >= '0' && rest[0] <= '9'; rest = rest.subspan(1))
        value =
            std::min(std::max(value, std::int64_t{0}) * 10 + (rest[0] - '0'), beyond_any_picture);
    return value;
}

std::int64_t stride_of(const PbmHead& head) { return (head.width + 7) / 8; }

/// Dots written as the digits 0 and 1.
std::string read_digits(const PbmHead& head, Bytes& rows) {
    std::span<const std::uint8_t> rest = head.rest;
    for (std::int64_t y = 0; y < head.height; ++y)
        for (std::int64_t x = 0; x < head.width; ++x) {
            skip_space(rest);
            if (rest.empty()) return "is cut short";
            if (rest[0] != '0' && rest[0] != '1') return "has a dot that is neither 0 nor 1";
            if (x % 8 == 0) rows.push_back(0);
            if (rest[0] == '1') rows.back() = low8(rows.back() | 0x80 >> x % 8);
            rest = rest.subspan(1);
        }
    return {};
}

}  // namespace

bool is_pbm(std::span<const std::uint8_t> file) {
    return file.size() >= 2 && file[0] == 'P' && (file[1] == '1' || file[1] == '4');
}

std::string read_pbm_head(std::span<const std::uint8_t> file, PbmHead& head) {
    head.text = file[1] == '1';
    head.rest = file.subspan(2);
    head.width = take_number(head.rest);
    head.height = take_number(head.rest);
    return head.width < 0 || head.height < 0 ? "has a damaged head" : "";
}

std::string read_pbm_rows(const PbmHead& head, Bytes& rows) {
    rows.clear();
    if (head.text) return read_digits(head, rows);
    const std::int64_t count = stride_of(head) * head.height;
    // One white space parts head and rows; more would already be dots.
    if (count + 1 > std::ssize(head.rest)) return "is cut short";
    const auto dots = head.rest.subspan(1, static_cast<std::size_t>(count));
    rows.assign(dots.begin(), dots.end());
    return {};
}

Bytes pbm_file(int width, int height, std::span<const std::uint8_t> rows) {
    const std::string head = "P4\n" + std::to_string(width) + " " + std::to_string(height) + "\n";
    Bytes file(head.begin(), head.end());
    file.insert(file.end(), rows.begin(), rows.end());
    return file;
}

}  // namespace orvanel
