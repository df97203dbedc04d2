#include "kit/code_page.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace orvanel {

namespace {

constexpr int first_high = 0x7F;

// One character a code from 0x7F on.
constexpr std::u16string_view high_characters = u"⌂ÇüéâäàåçêëèïîìÄÅ"
                                                u"ÉæÆôöòûùÿÖÜ¢£¥₧ƒ"
                                                u"áíóúñÑªº¿⌐¬½¼¡«»"
                                                u"░▒▓│┤╡╢╖╕╣║╗╝╜╛┐"
                                                u"└┴┬├─┼╞╟╚╔╩╦╠═╬╧"
                                                u"╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀"
                                                u"αßΓπΣσµτΦΘΩδ∞φε∩"
                                                u"≡±≥≤⌠⌡÷≈°∙·√ⁿ²³¯";
static_assert(high_characters.size() == 0x100 - first_high);

/// Characters that look like one of the page and are meant by it.
struct Alias {
    char16_t character, stands_for;
};
constexpr std::array<Alias, 7> aliases{{{u'β', u'ß'},
                                        {u'μ', u'µ'},
                                        {u'\u2126', u'Ω'},
                                        {u'∑', u'Σ'},
                                        {u'∈', u'ε'},
                                        {u'\u203E', u'¯'},
                                        {u'•', u'∙'}}};

void append_utf8(std::string& text, int character) {
    if (character < 0x80) {
        text += static_cast<char>(character);
    } else if (character < 0x800) {
        text += static_cast<char>(0xC0 | character >> 6);
        text += static_cast<char>(0x80 | (character & 0x3F));
    } else {
        text += static_cast<char>(0xE0 | character >> 12);
        text += static_cast<char>(0x80 | (character >> 6 & 0x3F));
        text += static_cast<char>(0x80 | (character & 0x3F));
    }
}

/// Bytes of the character that `lead` begins, 0 if it begins none.
std::size_t length_from(unsigned lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xC2 && lead < 0xE0) return 2;
    if (lead >= 0xE0 && lead < 0xF0) return 3;
    return lead >= 0xF0 && lead < 0xF5 ? 4 : 0;
}

}  // namespace

int take_character(std::string_view& text) {
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = length_from(lead);
    bool good = length > 0 && length <= text.size();
    unsigned character = length == 1 ? lead : lead & (0x7FU >> length);
    for (std::size_t i = 1; good && i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        good = (next & 0xC0) == 0x80;
        character = character << 6 | (next & 0x3FU);
    }
    text.remove_prefix(good ? length : 1);
    return good ? static_cast<int>(character) : -1;
}

int code_of(int character) {
    if (character >= ' ' && character < first_high) return character;
    for (const Alias& alias : aliases)
        if (alias.character == character) character = alias.stands_for;
    const std::size_t i = character < first_high || character > 0xFFFF
                              ? std::u16string_view::npos
                              : high_characters.find(static_cast<char16_t>(character));
    return i == std::u16string_view::npos ? -1 : first_high + static_cast<int>(i);
}

int character_of(int code) {
    return code < first_high ? code : high_characters[static_cast<std::size_t>(code - first_high)];
}

std::string text_of(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    constexpr std::string_view escaped = "\"\n\r\t\x1B", letters = "\"nrte";
    constexpr std::string_view module_escapes = "|~@";
    std::string text = "\"";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char c = static_cast<char>(bytes[i]);
        if (c == '\\') {
            const bool kept =
                i + 1 < bytes.size() &&
                module_escapes.find(static_cast<char>(bytes[i + 1])) != std::string_view::npos;
            text += kept ? "\\" : "\\\\";
        } else if (const std::size_t at = escaped.find(c); at != std::string_view::npos) {
            text += '\\';
            text += letters[at];
        } else if (bytes[i] < ' ') {
            text += "\\x";
            text += digits[bytes[i] >> 4];
            text += digits[bytes[i] & 15];
        } else {
            append_utf8(text, character_of(bytes[i]));
        }
    }
    return text += '"';
}

}  // namespace orvanel
