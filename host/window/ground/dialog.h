// dialog.h: dialogs as tables of controls, from which a window system builds them, and what their
// controls do. One dialog is open at a time. Main thread.

#pragma once

#include "seam/window_system.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace orvanel {

enum class ControlKind : std::uint8_t {
    group,  // a frame with a label around the radio buttons after it; no id
    radio,
    slider,  // 0..100 in pages of 25, its label above, "0%" and "100%" at its ends
    label,
    picture,  // the About bitmap (data/about.bmp), centred, 10 pixels below the top
    button,
};

struct Control {
    ControlKind kind;
    int id;                  // 0 if it has none
    std::string_view label;  // with an ampersand before its letter
};

constexpr int slider_end = 100;
constexpr int slider_page = 25;

/// One dialog. What it does is called through the functions below, not here.
struct Dialog {
    int id;  // 5000 About, 6000 custom type
    std::string_view title;
    std::span<const Control> controls;  // in the order of the Tab key, labels and groups between
    int focus_id;                       // the control that has the focus at first
    int cancel_id;                      // the button that the Escape key presses
    bool box_presses_cancel;            // so does the close box; else it just closes
    int (*value)(int control);
    void (*used)(int control, int value);
    void (*moved)(int x, int y);
};

/// Opens a dialog at a place of the screen (none: the system's choice); nothing while one is open.
void begin_dialog(const Dialog& dialog, std::optional<PixelPoint> at);

/// Closes the open one. What waited for that runs here, so this is the last thing that a button
/// does.
void end_dialog();

/// The window goes, and the open dialog with it; drop_boxes is for what waited.
void drop_dialog();

/// The open dialog, nullptr if there is none.
const Dialog* opened_dialog();

/// Whether a dialog has a control of that number.
bool has_control(const Dialog& dialog, int id);

/// What a control of the open dialog shows: 1 for the chosen radio button of a group, the slider's
/// position, else 0.
int dialog_value(int control);

/// The user pressed a button, chose a radio button (value 1) or moved the slider (its position,
/// 0..100). Nothing for a control that the open dialog doesn't have.
void dialog_used(int control, int value);

/// The user closed the dialog by its box.
void dialog_boxed();

/// The user moved the dialog to a place of the screen.
void dialog_moved(int x, int y);

/// The two dialogs there are.
void open_custom_type_dialog();
void open_about_dialog();

}  // namespace orvanel
