#include "kit/code_page.h"

#include "base/quoting.h"
#include "base/utf8.h"

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

}  // namespace

int take_character(std::string_view& text) {
    const auto [code, length] = utf8_character(text);
    text.remove_prefix(std::max<std::size_t>(length, 1));
    return length > 0 ? static_cast<int>(code) : -1;
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
    constexpr std::string_view module_escapes = "|~@";
    std::string text = "\"";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char c = static_cast<char>(bytes[i]);
        if (c == '\\') {
            const bool kept =
                i + 1 < bytes.size() &&
                module_escapes.find(static_cast<char>(bytes[i + 1])) != std::string_view::npos;
            text += kept ? "\\" : "\\\\";
        } else if (const char letter = escape_letter(c); letter != 0) {
            text += '\\';
            text += letter;
        } else if (bytes[i] < ' ') {
            text += byte_escape(c);
        } else {
            append_utf8(text, static_cast<char32_t>(character_of(bytes[i])));
        }
    }
    return text += '"';
}

}  // namespace orvanel
