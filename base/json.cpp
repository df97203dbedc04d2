#include "base/json.h"

#include "base/hex.h"
#include "base/utf8.h"

#include <cstdint>

namespace orvanel {

std::string json_text(std::string_view text) {
    std::string quoted = "\"";
    while (!text.empty()) {
        const Utf8Character character = utf8_character(text);
        const char c = text.front();
        const auto byte = static_cast<std::uint8_t>(c);
        if (c == '"' || c == '\\')
            (quoted += '\\') += c;
        else if (byte < ' ' || byte == 0x7F || character.length == 0)
            quoted += "\\u00" + hex_digits(byte, 2);
        else
            quoted += text.substr(0, character.length);
        text.remove_prefix(character.length == 0 ? 1 : character.length);
    }
    return quoted + '"';
}

}  // namespace orvanel
