// dialog.h: dialogs as tables of controls, from which a window system builds them, and what their
// controls do. One dialog is open at a time. Main thread.

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace orvanel {

enum class ControlKind : std::uint8_t {
    group,  // a frame with a label around the radio buttons behind it; no id
    radio,
    slider,  // 0..100 in pages of 25, its label above, "0%" and "100%" at its ends
    label,
    picture,  // the About bitmap (host/window/about_picture.h), centred, 10 pixels below the top
    button,
};

struct Control {
    ControlKind kind;
    int id;                  // 0 if it has none
    std::string_view label;  // with an ampersand before its letter
};

struct Dialog {
    int id;  // 5000 About, 6000 custom type
    std::string_view title;
    std::span<const Control> controls;  // in the order of the Tab key
    int cancel_id;                      // the button that the Escape key presses
    bool box_presses_cancel;            // so does the close box; else it just closes
};

/// The open dialog, none if there is none.
const Dialog* opened_dialog();

/// What a control shows: 1 for the chosen radio button of a group, the slider's position, else 0.
int dialog_value(int control);

/// The user pressed a button, chose a radio button (value 1) or moved the slider (its position).
void dialog_used(int control, int value);

/// The user closed the dialog by its box.
void dialog_boxed();

/// The user moved the dialog to a place of the screen.
void dialog_moved(int x, int y);

void open_custom_type_dialog();
void open_about_dialog();

/// A box that isn't a dialog of ours (a message, the question for a file) opens and closes. Menu
/// items and drops that come while any box is open wait for the last one to close and run then, in
/// their order.
void box_opened();
void box_closed();

}  // namespace orvanel
