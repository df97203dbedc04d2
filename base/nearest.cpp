#include "base/nearest.h"

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace orvanel {

namespace {

/// How many letters have to be put in, left out, changed or swapped with the next one to make one
/// of the other.
std::size_t edit_distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before_last, last(b.size() + 1), row(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = last[j] + (a[i] == b[j] ? 0 : 1);
            row[j + 1] = std::min({changed, last[j + 1] + 1, row[j] + 1});
            if (i > 0 && j > 0 && a[i] == b[j - 1] && a[i - 1] == b[j])
                row[j + 1] = std::min(row[j + 1], before_last[j - 1] + 1);
        }
        before_last = last;
        last = row;
    }
    return last.back();
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
