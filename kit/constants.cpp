#include "kit/constants.h"

#include "base/visible.h"
#include "kit/code_page.h"
#include "kit/forms.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace orvanel {

namespace {

struct Constant {
    std::string name;
    int value;
    std::string note;      // what it stands for where the name alone doesn't tell
    const Item* named_by;  // null: a constant of the kit, or of a key or row
};

struct Section {
    const char* title;
    std::vector<Constant> constants;
};

/// Codes of the page that have no ASCII letter of their own, from 0x80 on.
constexpr std::array<std::string_view, 38> letters_of_codes{
    "C",  "ue", "e", "a", "ae", "a",  "a", "c",  "e", "e", "e", "i", "i",
    "i",  "Ae", "A", "E", "ae", "Ae", "o", "oe", "o", "u", "u", "y", "Oe",
    "Ue", "c",  "L", "Y", "Pt", "f",  "a", "i",  "o", "u", "n", "N"};
constexpr int sharp_s = 0xE1;

std::string ascii_of(std::uint8_t code) {
    const auto high = static_cast<std::size_t>(code) - 0x80;
    if (code == sharp_s) return "ss";
    if (code >= 0x80 && high < letters_of_codes.size()) return std::string(letters_of_codes[high]);
    return {static_cast<char>(code)};
}

bool is_word_char(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

std::string upper(std::string_view text) {
    std::string word(text);
    std::ranges::transform(word, word.begin(), [](char c) { return upper(c); });
    return word;
}

/// `Grüße, Rolf!` becomes GRUESSE_ROLF. Empty if there is no letter and no digit.
std::string word_of(std::string_view text) {
    std::string word;
    for (const char c : text) {
        const std::string letters = ascii_of(static_cast<std::uint8_t>(c));
        for (const char letter : letters)
            if (is_word_char(letter))
                word += upper(letter);
            else if (!word.empty() && word.back() != '_')
                word += '_';
    }
    if (!word.empty() && word.back() == '_') word.pop_back();
    return word;
}

bool is_one_of(char c, std::string_view letters) { return letters.find(c) != std::string::npos; }

/// The words that a label shows, without its first letter where that is the alignment.
std::string_view shown(std::string_view label) {
    label.remove_prefix(std::min(label.find_first_not_of("|~@\\"), label.size()));
    if (!label.empty() && is_one_of(label.front(), "LCR")) label.remove_prefix(1);
    return label;
}

/// The number of the parameter with this name.
std::optional<int> number_of(const Parsed& command, std::string_view name) {
    for (int i = 0; i < param_count(*command.form); ++i)
        if (command.form->params[static_cast<std::size_t>(i)].name == name)
            return command.params[static_cast<std::size_t>(i)];
    return {};
}

const Item* find_named(const Kit& kit, Kind kind, int number) {
    const auto item = std::ranges::find_if(kit.items, [&](const Item& i) {
        return i.kind == kind && i.number == number && !i.name.empty();
    });
    return item == kit.items.end() ? nullptr : &*item;
}

std::string note_of(std::string_view words) {
    return text_of(std::span(reinterpret_cast<const std::uint8_t*>(words.data()), words.size()));
}

/// A key's constants, and those of the rows of a menu.
struct Touched {
    std::vector<Constant> keys, rows;
};

void add(std::vector<Constant>& all, const std::string& name, int value, const std::string& note) {
    if (value > 0) all.push_back({name, value, note, nullptr});
}

void add_key(Touched& touched, const Parsed& key, std::string_view words, const std::string& word) {
    if (word.empty()) return;
    add(touched.keys, "KEY_" + word, *number_of(key, "down code"), note_of(words));
    add(touched.keys, "KEY_" + word + "_UP", *number_of(key, "up code"), note_of(words));
}

void add_menu(Touched& touched, const Parsed& menu, std::string_view text) {
    if (!text.empty() && is_one_of(text.front(), "UOLR")) text.remove_prefix(1);
    const std::size_t end = std::min(text.find('|'), text.size());
    const std::string_view label = shown(text.substr(0, end));
    add_key(touched, menu, label, word_of(label));
    const int first = *number_of(menu, "list code");
    text.remove_prefix(end);
    for (int row = 0; !text.empty() && first > 0; ++row) {
        text.remove_prefix(1);
        const std::string_view words = text.substr(0, text.find('|'));
        text.remove_prefix(words.size());
        const std::string word = word_of(words);
        if (!word.empty() && first + row <= 255)
            add(touched.rows, "ROW_" + word, first + row, note_of(words));
    }
}

void add_touched(const Kit& kit, const Item& macro, Touched& touched) {
    std::span<const std::uint8_t> bytes = macro.bytes;
    while (!bytes.empty()) {
        const auto lead_in = std::ranges::find_if(
            bytes, [](std::uint8_t c) { return c == lead_in_esc || c == lead_in_hash; });
        bytes = bytes.subspan(static_cast<std::size_t>(lead_in - bytes.begin()));
        if (bytes.empty()) return;
        const std::optional<Parsed> command = parse_command(bytes);
        if (!command) return;
        if (command->form != nullptr && number_of(*command, "down code")) {
            const auto tail = bytes.subspan(command->tail_at, command->tail_size);
            const std::string_view text{reinterpret_cast<const char*>(tail.data()), tail.size()};
            const std::optional<int> picture = number_of(*command, "picture");
            const Item* named = picture ? find_named(kit, Kind::picture, *picture) : nullptr;
            if (number_of(*command, "list code"))
                add_menu(touched, *command, text);
            else if (named != nullptr && word_of(shown(text)).empty())
                add_key(touched, *command, named->name, upper(named->name));
            else
                add_key(touched, *command, shown(text), word_of(shown(text)));
        }
        bytes = bytes.subspan(command->size);
    }
}

/// Those of one name and value once; of one name and several values none, but a note that says so.
void settle_names(std::vector<Constant>& all, std::vector<std::string>& notes) {
    std::vector<Constant> settled;
    for (const Constant& constant : all) {
        const auto same = [&](const Constant& other) { return other.name == constant.name; };
        if (std::ranges::any_of(settled, same)) continue;
        const bool differs = std::ranges::any_of(all, [&](const Constant& other) {
            return same(other) && other.value != constant.value;
        });
        const std::string note = constant.name + " would be more than one code";
        if (!differs)
            settled.push_back(constant);
        else if (std::ranges::find(notes, note) == notes.end())
            notes.push_back(note);
    }
    all = settled;
}

struct KindSection {
    Kind kind;
    const char* title;
    const char* prefix;
};
constexpr std::array<KindSection, 6> kind_sections{
    {{Kind::font, "Fonts", "FONT_"},
     {Kind::picture, "Pictures", "PICTURE_"},
     {Kind::power_on, "Power-on macros", "POWER_ON_MACRO_"},
     {Kind::normal, "Normal macros", "NORMAL_MACRO_"},
     {Kind::touch, "Touch macros, by the codes of the keys that start them", "TOUCH_MACRO_"},
     {Kind::menu, "Menu macros, by the codes of the rows that start them", "MENU_MACRO_"}}};

/// Everything in the kit that has a name or a label.
struct Constants {
    std::vector<Section> sections;
    std::vector<std::string> notes;
};

Constants constants_of(const Kit& kit, Faults& faults) {
    Constants all;
    Section own{"Constants of the kit", {}};
    for (const auto& [name, named] : kit.names)
        if (named.kind == Kind::number)
            own.constants.push_back({upper(name), named.number, {}, nullptr});
    all.sections.push_back(own);
    for (const KindSection& kind : kind_sections) {
        Section section{kind.title, {}};
        for (const Item& item : kit.items)
            if (item.kind == kind.kind && !item.name.empty())
                section.constants.push_back(
                    {kind.prefix + upper(item.name), item.number, {}, &item});
        all.sections.push_back(section);
    }
    std::vector<Constant> seen;
    for (const Section& section : all.sections)
        for (const Constant& constant : section.constants) {
            const auto twin = std::ranges::find(seen, constant.name, &Constant::name);
            if (twin != seen.end()) {
                const Item* item =
                    constant.named_by != nullptr ? constant.named_by : twin->named_by;
                faults.emplace_back(item != nullptr ? item->place : Place{kit.file, 0, 0},
                                    "two names become one constant, " + constant.name +
                                        ", where case doesn't count: rename one of them");
            }
            seen.push_back(constant);
        }
    Touched touched;
    for (const Item& item : kit.items)
        if (item.kind != Kind::font && item.kind != Kind::picture) add_touched(kit, item, touched);
    for (auto& [title, constants] : {Section{"Codes of keys, by their labels", touched.keys},
                                     Section{"Codes of menu rows, by their words", touched.rows}}) {
        std::vector<Constant> settled = constants;
        std::erase_if(settled, [&](const Constant& constant) {
            return std::ranges::find(seen, constant.name, &Constant::name) != seen.end();
        });
        settle_names(settled, all.notes);
        all.sections.push_back({title, settled});
    }
    std::erase_if(all.sections, [](const Section& section) { return section.constants.empty(); });
    return all;
}

std::string file_name(const std::string& path) {
    return visible(std::filesystem::path(path).filename().string());
}

/// `PAGE` of `dir/page.h`.
std::string prefix_of(const std::string& path) {
    std::string word = word_of(std::filesystem::path(path).stem().string());
    if (word.empty() || (word.front() >= '0' && word.front() <= '9')) word.insert(0, "KIT_");
    while (word.back() == '_')
        word.pop_back();
    return word;
}

/// A note that ends no comment.
std::string in_comment(std::string note) {
    for (std::size_t at = note.find("*/"); at != std::string::npos; at = note.find("*/"))
        note.insert(at + 1, " ");
    return note;
}

}  // namespace

std::string header_of(const Kit& kit, const std::string& path, Faults& faults) {
    const Constants all = constants_of(kit, faults);
    const std::string prefix = prefix_of(path);
    const std::string guard = "ORVANEL42_KIT_" + prefix + "_H";
    std::string text = "/* The names of " + in_comment(file_name(kit.file)) +
                       ", written by orvanel42-kit. */\n\n#ifndef " + guard + "\n#define " + guard +
                       "\n";
    for (const auto& [title, constants] : all.sections) {
        text += "\n/* " + std::string(title) + " */\n";
        for (const auto& [name, value, note, item] : constants) {
            text += "#define " + prefix + "_" + name + " " + std::to_string(value);
            if (!note.empty()) text += " /* " + in_comment(note) + " */";
            text += '\n';
        }
    }
    for (const std::string& note : all.notes)
        text += "\n/* " + prefix + "_" + note + ". */";
    return text + (all.notes.empty() ? "" : "\n") + "\n#endif\n";
}

std::string python_of(const Kit& kit, Faults& faults) {
    const Constants all = constants_of(kit, faults);
    std::string text = "# The names of " + file_name(kit.file) + ", written by orvanel42-kit.\n";
    for (const auto& [title, constants] : all.sections) {
        text += "\n# " + std::string(title) + "\n";
        for (const auto& [name, value, note, item] : constants)
            text +=
                name + " = " + std::to_string(value) + (note.empty() ? "" : "  # " + note) + '\n';
    }
    for (const std::string& note : all.notes)
        text += "\n# " + note + ".\n";
    return text;
}

}  // namespace orvanel
