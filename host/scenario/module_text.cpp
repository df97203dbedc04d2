#include "host/scenario/module_text.h"

#include "base/quoting.h"
#include "base/utf8.h"
#include "kit/code_page.h"

namespace orvanel {

std::string codes_of(std::string_view text, std::vector<std::uint8_t>& codes) {
    while (!text.empty()) {
        const Utf8Character character = utf8_character(text);
        const int raw = static_cast<std::uint8_t>(text.front());
        const bool is_code = character.length == 0 || character.code < ' ';
        const int code = is_code ? raw : code_of(static_cast<int>(character.code));
        if (code < 0)
            return in_quotes(text.substr(0, character.length)) +
                   " is no character of the module; \\xHH names a code";
        codes.push_back(static_cast<std::uint8_t>(code));
        text.remove_prefix(is_code ? 1 : character.length);
    }
    return {};
}

std::string module_text(std::span<const std::uint8_t> codes) {
    std::string text = "\"";
    for (const std::uint8_t code : codes) {
        const char byte = static_cast<char>(code);
        if (code == '\n')
            text += ' ';
        else if (code == '\\' || code == '"')
            text += {'\\', byte};
        else if (code < ' ')
            text += byte_escape(byte);
        else
            append_utf8(text, static_cast<char32_t>(character_of(code)));
    }
    return text + '"';
}

}  // namespace orvanel
