// The dialog for the model of the user's own choice. The glass shows each choice at once.

#include "base/bytes.h"
#include "firmware/core/ground/backlight.h"
#include "host/program/settings.h"
#include "host/skin/lcd_colours.h"
#include "host/window/ground/dialog.h"
#include "host/window/ground/menu.h"
#include "seam/window_system.h"

#include <array>

namespace orvanel {

namespace {

constexpr int type_button = 6010;       // + lcd_type
constexpr int polarizer_button = 6020;  // + lcd_polarizer
constexpr int light_button = 6030;      // + lcd_backlight
constexpr int light_slider = 6040;
constexpr int cancel_button = 6051;
constexpr int ok_button = 60052;

// clang-format off
constexpr Control controls[]{
    {ControlKind::group,  0,                    "LCD Type"},
    {ControlKind::radio,  type_button,          "FS&TN"},
    {ControlKind::radio,  type_button + 1,      "&STN blue"},
    {ControlKind::radio,  type_button + 2,      "STN &yellow/green"},
    {ControlKind::group,  0,                    "Polarizer"},
    {ControlKind::radio,  polarizer_button,     "&positve"},  // the label as users know it
    {ControlKind::radio,  polarizer_button + 1, "ne&gative"},
    {ControlKind::group,  0,                    "Backlight color"},
    {ControlKind::radio,  light_button,         "&CFL white"},
    {ControlKind::radio,  light_button + 1,     "LED &white"},
    {ControlKind::radio,  light_button + 2,     "&LED yellow/green"},
    {ControlKind::radio,  light_button + 3,     "LED &red"},
    {ControlKind::radio,  light_button + 4,     "LED &blue"},
    {ControlKind::radio,  light_button + 5,     "LED &amber"},
    {ControlKind::slider, light_slider,         "Bac&klight"},
    {ControlKind::button, ok_button,            "&Ok"},
    {ControlKind::button, cancel_button,        "Canc&el"},
};
// clang-format on

/// What Cancel brings back.
struct Kept {
    int type, polarizer, backlight, model;
    std::uint8_t level;
};
constinit Kept kept{};

constinit int slider_position = 0;  // percent, as the user left it

void show_choice() {
    model_apply();
    window_repaint();
}

void move_slider(int position) {
    slider_position = position;
    const std::uint8_t percent = position < min_shown_percent ? std::uint8_t{0} : low8(position);
    set_backlight_level(position == slider_end ? backlight_level_full : percent);
    show_choice();
}

void accept() {
    adopt_backlight_level();
    menu_mark_view();
    end_dialog();
}

void discard() {
    lcd_type = kept.type;
    lcd_polarizer = kept.polarizer;
    lcd_backlight = kept.backlight;
    skin_model = kept.model;
    set_backlight_level(kept.level);
    show_choice();
    end_dialog();
}

void choose(int button) {
    if (button >= light_button)
        lcd_backlight = button - light_button;
    else if (button >= polarizer_button)
        lcd_polarizer = button - polarizer_button;
    else
        lcd_type = button - type_button;
    show_choice();
}

void control_used(int control, int value) {
    switch (control) {
    case light_slider:
        return move_slider(value);
    case ok_button:
        return accept();
    case cancel_button:
        return discard();
    default:
        return choose(control);
    }
}

int value_of(int control) {
    if (control == light_slider) return slider_position;
    const bool chosen = control == type_button + lcd_type ||
                        control == polarizer_button + lcd_polarizer ||
                        control == light_button + lcd_backlight;
    return chosen ? 1 : 0;
}

void keep_place(int x, int y) {
    custom_dialog_x = x;
    custom_dialog_y = y;
}

// The close box neither takes the choice nor brings the old one back: what shows then stays, and so
// does skin_model, whose mark the menu gets with its next change.
constexpr Dialog dialog{6000,          "LCD Custom Type - no standard",
                        controls,      ok_button,
                        cancel_button, false,
                        value_of,      control_used,
                        keep_place};

}  // namespace

void open_custom_type_dialog() {
    if (opened_dialog() != nullptr) return;
    const std::uint8_t level = backlight_light.load().backlight_level;
    kept = {lcd_type, lcd_polarizer, lcd_backlight, skin_model, level};
    skin_model = custom_model;
    slider_position = level == backlight_level_full ? slider_end : level;
    begin_dialog(dialog, PixelPoint{custom_dialog_x, custom_dialog_y});
}

}  // namespace orvanel
