#include "base/pbm.h"

#include <algorithm>
#include <string_view>

namespace orvanel {

void skip_pbm_space(std::span<const std::uint8_t>& rest) {
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

long take_pbm_number(std::span<const std::uint8_t>& rest) {
    constexpr long beyond_any_picture = 1'000'000;
    skip_pbm_space(rest);
    long value = -1;
    for (; !rest.empty() && rest[0] >= '0' && rest[0] <= '9'; rest = rest.subspan(1))
        value = std::min(std::max(value, 0L) * 10 + (rest[0] - '0'), beyond_any_picture);
    return value;
}

}  // namespace orvanel
