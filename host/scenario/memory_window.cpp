#include "host/scenario/memory_window.h"

#include "base/quoting.h"
#include "host/program/settings.h"
#include "host/scenario/ending.h"
#include "host/scenario/report.h"
#include "host/skin/view.h"
#include "host/window/ground/dialog.h"
#include "host/window/ground/input.h"
#include "host/window/ground/window_place.h"
#include "host/window/roof/menu_command.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace orvanel {

MemoryWindow memory_window{};

namespace {

/// A window that has reached the end of the screen stays there.
int on_screen(int place) {
    return std::clamp<int>(place, std::numeric_limits<std::int16_t>::min(),
                           std::numeric_limits<std::int16_t>::max());
}

}  // namespace

void open_memory_window() {
    memory_window = {};
    memory_window.left = on_screen(window_x);
    memory_window.top = on_screen(window_y);
    resize_window();
}

Outline memory_outline() { return memory_window.outline ? *memory_window.outline : whole_window(); }

void memory_mouse_down(int px, int py) {
    memory_window.mouse = {px, py};
    memory_window.left_down = true;
    if (opened_dialog() == nullptr) mouse_down(px, py);
}

void memory_mouse_move(int px, int py) {
    if (const auto grab = memory_window.dragged_at) {
        // The window follows, and so the mouse is where it took hold again.
        memory_window.left = on_screen(memory_window.left + px - grab->x);
        memory_window.top = on_screen(memory_window.top + py - grab->y);
        window_moved(memory_window.left, memory_window.top);
        return;
    }
    memory_window.mouse = {px, py};
    if (opened_dialog() == nullptr) mouse_move(px, py, memory_window.left_down);
}

void memory_mouse_up(int px, int py) {
    memory_window.left_down = false;
    if (std::exchange(memory_window.dragged_at, std::nullopt)) return;
    memory_window.mouse = {px, py};
    if (opened_dialog() == nullptr) mouse_up(px, py);
}

// What window_system.h asks for. Pictures are made when a scenario asks for them.

void window_repaint() {}

void resize_window() {
    memory_window.width = window_width();
    memory_window.height = window_height();
}

void show_window_frame() { memory_window.outline.reset(); }

void cut_window(const Outline& outline) { memory_window.outline = outline; }

void set_window_on_top(bool on) { memory_window.on_top = on; }

void set_window_title(std::string_view title) { memory_window.title = title; }

void activate_window() {}

void activate_other_window(std::uint32_t /*number*/) {}

void close_window_soon() { end_scenario(); }

void drag_window() { memory_window.dragged_at = memory_window.mouse; }

void set_pointer(Pointer pointer) { memory_window.pointer = pointer; }

std::optional<PixelPoint> pointer_position() { return memory_window.mouse; }

void mark_menu_item(int /*id*/, bool /*marked*/) {}

void open_popup_menu(PixelPoint /*at*/) {}

void open_dialog(const Dialog& dialog, std::optional<PixelPoint> /*at*/) {
    print_event("dialog " + std::to_string(dialog.id) + " " + text_piece(dialog.title));
}

void close_dialog() {}

/// The user gives up at once.
void ask_for_file() { file_chosen("*.eep"); }

void set_clipboard(std::span<const std::uint8_t> dib) {
    memory_window.clipboard.assign(dib.begin(), dib.end());
}

void start_program(const std::string& command) { print_event("start " + text_piece(command)); }

void show_help(const std::string& path) { print_event("help " + text_piece(path)); }

bool open_ports_panel(PixelPoint /*at*/) { return true; }

void close_ports_panel() {}

void draw_led(int /*window*/, PixelPoint /*at*/, std::span<const std::uint32_t> /*pixels*/) {}

}  // namespace orvanel
