#include "host/scenario/window_commands.h"

#include "base/utf8.h"
#include "host/import/picture_import.h"
#include "host/program/settings.h"
#include "host/scenario/memory_window.h"
#include "host/scenario/report.h"
#include "host/scenario/window_picture.h"
#include "host/window/ground/dialog.h"
#include "host/window/ground/menu.h"
#include "host/window/ground/ports_panel.h"
#include "host/window/roof/keyboard.h"
#include "host/window/roof/menu_command.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace orvanel {

namespace {

int px_of(const Arguments& a) { return static_cast<int>(a.x); }
int py_of(const Arguments& a) { return static_cast<int>(a.y); }

// Keys.

/// The number behind a prefix that `name` begins with; none if it isn't one of least..most, or if
/// anything else is there.
std::optional<int> number_behind(std::string_view prefix, std::string_view name, int least,
                                 int most) {
    if (!name.starts_with(prefix)) return std::nullopt;
    name.remove_prefix(prefix.size());
    int number = 0;
    const auto [end, fault] = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool whole = fault == std::errc{} && end == name.data() + name.size();
    return whole && number >= least && number <= most ? std::optional(number) : std::nullopt;
}

/// Alt held while the digits are typed on the keypad.
void type_alt_number(std::string_view digits) {
    for (const char digit : digits)
        alt_digit(digit - '0');
    alt_released();
}

/// A text in UTF-8; what is none counts byte by byte.
void type(std::string_view text) {
    while (!text.empty()) {
        const auto [code, length] = utf8_character(text);
        character_typed(length > 0 ? code : static_cast<unsigned char>(text.front()));
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
}

const Shortcut* shortcut_of(std::string_view keys) {
    const auto found = std::ranges::find(shortcuts(), keys, &Shortcut::keys);
    return found == shortcuts().end() ? nullptr : &*found;
}

constexpr std::string_view alt = "Alt+";

bool is_alt_number(std::string_view name) {
    return name.size() > alt.size() && name.starts_with(alt) &&
           std::ranges::all_of(name.substr(alt.size()),
                               [](char c) { return c >= '0' && c <= '9'; });
}

// Files.

void report_unwritten(const std::string& path, const std::string& fault) {
    if (!fault.empty()) report_fault(wrong_line, "can't write " + path + ": " + fault);
}

}  // namespace

void mouse_down_command(const Arguments& a) { memory_mouse_down(px_of(a), py_of(a)); }

void mouse_move_command(const Arguments& a) { memory_mouse_move(px_of(a), py_of(a)); }

void mouse_up_command(const Arguments& a) { memory_mouse_up(px_of(a), py_of(a)); }

void key_command(const Arguments& a) {
    constexpr int function_keys = 10;
    // A text in quotes is no name of a key.
    const std::string_view name = a.quoted ? std::string_view{} : std::string_view{a.word};
    if (const Shortcut* const shortcut = shortcut_of(name)) return menu_command(shortcut->id);
    if (name == "Alt+F4") return menu_command(item_exit);  // as the system does it
    if (opened_dialog() != nullptr) return;                // that has the keys
    if (const auto number = number_behind("F", name, 1, function_keys))
        function_key(*number);
    else if (is_alt_number(name))
        type_alt_number(name.substr(alt.size()));
    else
        type(a.word);
}

void menu_item_command(const Arguments& a) {
    const int id = static_cast<int>(a.number);
    if (is_menu_item(id))
        menu_command(id);
    else
        report_fault(wrong_line, "the menu has no item " + std::to_string(id));
}

void drop_command(const Arguments& a) {
    // In quotes, which whoever opens it takes off: the name may begin with one of its own.
    drop_file('"' + a.path + '"', px_of(a), py_of(a));
}

void dialog_command(const Arguments& a) {
    const Dialog* const dialog = opened_dialog();
    if (dialog == nullptr)
        report_fault(wrong_line, "no dialog is open");
    else if (a.number == dialog_close)
        dialog_boxed();
    else if (!has_control(*dialog, static_cast<int>(a.number)))
        report_fault(wrong_line, "dialog " + std::to_string(dialog->id) + " has no control " +
                                     std::to_string(a.number));
    else
        dialog_used(static_cast<int>(a.number), static_cast<int>(a.value));
}

void save_window_command(const Arguments& a) { report_unwritten(a.path, write_window(a.path)); }

void save_outline_command(const Arguments& a) {
    report_unwritten(a.path, write_outline(a.path, memory_outline()));
}

void save_clipboard_command(const Arguments& a) {
    if (memory_window.clipboard.empty())
        report_fault(wrong_line, "nothing has come to the clipboard");
    else
        report_unwritten(a.path, write_clipboard(a.path, memory_window.clipboard));
}

void print_title(const Arguments& /*a*/) { print_line("title " + memory_window.title); }

void print_cursor(const Arguments& /*a*/) {
    switch (memory_window.pointer) {
    case Pointer::arrow:
        return print_line("cursor arrow");
    case Pointer::move:
        return print_line("cursor move");
    case Pointer::hand:
        return print_line("cursor hand");
    }
}

void print_panel(const Arguments& /*a*/) {
    const auto lit = ports_lit();
    if (!lit) return print_line("panel 0");
    std::string text = "panel 1";
    for (const bool light : *lit)
        text += light ? " 1" : " 0";
    print_line(text);
}

void print_geometry(const Arguments& /*a*/) {
    std::string text = "geometry";
    for (const int number :
         {memory_window.left, memory_window.top, memory_window.width, memory_window.height})
        text += " " + std::to_string(number);
    text += memory_window.outline ? " cut" : " framed";
    print_line(text + (memory_window.on_top ? " on-top" : " normal"));
}

void print_mark(const Arguments& a) {
    const int id = static_cast<int>(a.number);
    if (is_menu_item(id))
        print_line("mark " + std::to_string(id) + (menu_marked(id) ? " 1" : " 0"));
    else
        report_fault(wrong_line, "the menu has no item " + std::to_string(id));
}

}  // namespace orvanel
