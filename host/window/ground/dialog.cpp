#include "host/window/ground/dialog.h"

#include "host/window/ground/boxes.h"

#include <algorithm>

namespace orvanel {

namespace {

constinit const Dialog* opened = nullptr;

}  // namespace

void begin_dialog(const Dialog& dialog, std::optional<PixelPoint> at) {
    if (opened != nullptr) return;
    opened = &dialog;
    box_opened();
    open_dialog(dialog, at);
}

void end_dialog() {
    opened = nullptr;
    close_dialog();
    box_closed();
}

void drop_dialog() {
    opened = nullptr;
    close_dialog();
}

const Dialog* opened_dialog() { return opened; }

bool has_control(const Dialog& dialog, int id) {
    return id != 0 &&
           std::ranges::any_of(dialog.controls, [id](const Control& c) { return c.id == id; });
}

int dialog_value(int control) { return opened == nullptr ? 0 : opened->value(control); }

void dialog_used(int control, int value) {
    if (opened != nullptr && has_control(*opened, control)) opened->used(control, value);
}

void dialog_boxed() {
    if (opened == nullptr) return;
    if (opened->box_presses_cancel)
        opened->used(opened->cancel_id, 0);
    else
        end_dialog();
}

void dialog_moved(int x, int y) {
    if (opened != nullptr) opened->moved(x, y);
}

}  // namespace orvanel
