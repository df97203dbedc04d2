#include "tests/support/fake_window.h"

#include "seam/platform.h"

namespace orvanel {

FakeWindow fake_window{};

void window_repaint() { ++fake_window.repaints; }
void resize_window() {}
void show_window_frame() { fake_window.outline.reset(); }
void cut_window(const Outline& outline) { fake_window.outline = outline; }
void set_window_on_top(bool /*on*/) {}
void set_window_title(std::string_view title) { fake_window.title = title; }
void activate_window() {}
void activate_other_window(std::uint32_t number) { fake_window.activated = number; }
void close_window_soon() {}
void drag_window() {}
void set_pointer(Pointer /*pointer*/) {}
std::optional<PixelPoint> pointer_position() { return std::nullopt; }
void mark_menu_item(int /*id*/, bool /*marked*/) {}
void open_popup_menu(PixelPoint /*at*/) {}
void open_dialog(const Dialog& /*dialog*/, std::optional<PixelPoint> /*at*/) {}
void close_dialog() {}
void ask_for_file() {}
void set_clipboard(std::span<const std::uint8_t> /*dib*/) {}
void start_program(const std::string& /*command*/) {}
void show_help(const std::string& /*path*/) {}
bool open_ports_panel(PixelPoint /*at*/) { return true; }
void close_ports_panel() {}
void draw_led(int window, PixelPoint at, std::span<const std::uint32_t> pixels) {
    fake_window.lights.push_back({window, at, {pixels.begin(), pixels.end()}});
}

// The main thread's part of platform.h.
void set_fade_timer(bool runs) { fake_window.fades.push_back(runs); }
void open_message_box(MessageOf /*whose*/, std::string_view /*caption*/, std::string_view text) {
    fake_window.boxes.emplace_back(text);
}
void sound_beep() { ++fake_window.beeps; }

}  // namespace orvanel
