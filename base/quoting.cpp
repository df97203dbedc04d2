#include "base/quoting.h"

#include "base/hex.h"

namespace orvanel {

namespace {

constexpr std::size_t max_quotation = 60;  // characters of the user's text in a message

constexpr bool is_printable(char c) { return c >= ' ' && c <= '~'; }

}  // namespace

std::string byte_escape(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return {'\\', 'x', hex_character(value >> 4), hex_character(value)};
}

std::string text_piece(std::string_view bytes, std::string_view lettered) {
    std::string piece = "\"";
    for (const char c : bytes) {
        if (lettered.find(c) != std::string_view::npos) {
            piece += '\\';
            piece += escape_letter(c);
        } else if (is_printable(c)) {
            piece += c;
        } else {
            piece += byte_escape(c);
        }
    }
    return piece += '"';
}

std::string printable(std::string_view text) {
    std::string shown;
    for (const char c : text.substr(0, max_quotation)) {
        if (is_printable(c))
            shown += c;
        else
            shown += byte_escape(c);
    }
    if (text.size() > max_quotation) shown += "...";
    return shown;
}

std::string in_quotes(std::string_view text) {
    std::string shown = "'";
    shown += printable(text);
    return shown += '\'';
}

}  // namespace orvanel
