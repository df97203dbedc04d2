#include "base/visible.h"

#include "base/quoting.h"
#include "base/utf8.h"

#include <algorithm>
#include <cstdio>

namespace orvanel {

namespace {

struct Range {
    char32_t first, last;
};

/// Characters that a terminal acts on, or that make a line look like another one.
constexpr Range unseen[]{
    {0x00, 0x1F},      // C0
    {0x7F, 0x9F},      // DEL, C1
    {0x061C, 0x061C},  // marks of the direction of writing
    {0x200B, 0x200F}, {0x2028, 0x202E}, {0x2060, 0x2069}, {0xFEFF, 0xFEFF},
};

bool is_seen(char32_t code) {
    return std::none_of(std::begin(unseen), std::end(unseen), [code](const Range& range) {
        return code >= range.first && code <= range.last;
    });
}

std::string made_visible(std::string_view text, std::string_view kept) {
    std::string shown;
    while (!text.empty()) {
        const auto [code, length] = utf8_character(text);
        const std::size_t n = std::max<std::size_t>(length, 1);
        if ((length > 0 && is_seen(code)) || kept.find(text.front()) != std::string_view::npos) {
            shown += text.substr(0, n);
        } else {
            for (const char c : text.substr(0, n))
                shown += byte_escape(c);
        }
        text.remove_prefix(n);
    }
    return shown;
}

}  // namespace

std::string visible(std::string_view text) { return made_visible(text, ""); }

std::string visible_lines(std::string_view text) { return made_visible(text, "\n\t"); }

void tell_user(std::string_view message) {
    std::fprintf(stderr, "%s\n", visible_lines(message).c_str());
}

}  // namespace orvanel
