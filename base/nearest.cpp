#include "base/nearest.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace orvanel {

namespace {

/// How many letters have to be put in, left out or changed to make one of the other.
std::size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, diagonal + 1, row[j] + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string_view nearest_name(std::string_view word, const std::vector<std::string_view>& names) {
    constexpr std::size_t max_length = 30;  // beyond it nobody means a name of ours
    word = word.substr(0, max_length);
    const auto nearest = std::min_element(
        names.begin(), names.end(), [word](std::string_view a, std::string_view b) {
            return edit_distance(word, a) < edit_distance(word, b);
        });
    if (nearest == names.end() || edit_distance(word, *nearest) > nearest->size() / 2) return {};
    return *nearest;
}

std::string is_it(std::string_view word, const std::vector<std::string_view>& names) {
    const std::string_view name = nearest_name(word, names);
    return name.empty() ? "" : "; is it '" + std::string(name) + "'?";
}

}  // namespace orvanel
