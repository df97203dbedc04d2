// The About box.

#include "host/window/ground/dialog.h"

#include <optional>

namespace orvanel {

namespace {

constexpr std::string_view project_page = "www.orvanel42.org";
constexpr int close_button = 5200;

constexpr Control controls[]{
    {ControlKind::picture, 0, ""},
    {ControlKind::label, 5005, project_page},
    {ControlKind::label, 5006, "Simulator for HD Orvanel42 series"},
    {ControlKind::label, 5007, "Version 1.5, November 2008"},
    {ControlKind::button, close_button, "Close"},
};

void control_used(int control, int /*value*/) {
    if (control == close_button) end_dialog();
}

int value_of(int /*control*/) { return 0; }

void stay(int /*x*/, int /*y*/) {}

constexpr Dialog dialog{5000,         "About Orvanel42 simulation",
                        controls,     close_button,
                        close_button, true,
                        value_of,     control_used,
                        stay};

}  // namespace

void open_about_dialog() { begin_dialog(dialog, std::nullopt); }

}  // namespace orvanel
