// window_system.h: the part of the seam that shows something: window, menu, mouse pointer,
// clipboard, boxes, the ports panel, and programs beside ours. As with platform.h each program
// links exactly one implementation: desktop/, or the window in memory of headless/. All of it is
// called on the main thread, returns at once and never fails loudly: what a window system refuses
// stays undone.
//
// Window pixels are those of the picture that compose_window (host/skin/painting.h) makes, counted
// from the upper left corner of the client area, which is the skin alone, without menu and title.
// Screen positions are in whatever the window system counts; they are kept and given back only.

#pragma once

#include "seam/platform.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace orvanel {

struct Dialog;   // host/window/ground/dialog.h
struct Outline;  // host/skin/outline.h

struct PixelPoint {
    int x, y;
};

// The window.

/// Has the whole window painted soon.
void window_repaint();

/// Gives the client area the size that window_width() and window_height() now have. The upper left
/// corner stays where it is.
void resize_window();

/// Title bar, menu and the whole rectangle of the skin; or the outline alone, which has the size of
/// the client area.
void show_window_frame();
void cut_window(const Outline& outline);

void set_window_on_top(bool on);
void set_window_title(std::string_view title);

/// Brings the window to the foreground, and the focus to it.
void activate_window();

/// As if the user had closed the window: the program's end.
void close_window_soon();

/// The user drags the window from here on as by its title bar, until the button is up. No mouse
/// event of that drag comes to host/window/ground/input.h.
void drag_window();

// Mouse pointer and menu.

enum class Pointer : std::uint8_t {
    arrow,  // on the glass
    move,   // off the glass: MOVECURSOR
    hand,   // over a touch area: HANDCURSOR
};
void set_pointer(Pointer pointer);

/// Where the mouse is now, in window pixels; none if the system doesn't tell.
std::optional<PixelPoint> pointer_position();

/// Sets or takes the check mark of an item of menu.h.
void mark_menu_item(int id, bool marked);

/// Opens the popup menu, whose submenus are those of the menu bar.
void open_popup_menu(PixelPoint at);

// Boxes. While one is open, ticks, feeds and the line go on.

/// Opens a dialog at a place of the screen (none: the system's choice), its controls in the state
/// that dialog_value (host/window/ground/dialog.h) tells. What the user does there comes to
/// dialog_used.
void open_dialog(const Dialog& dialog, std::optional<PixelPoint> at);

/// Closes the open dialog. No dialog_used comes of it.
void close_dialog();

/// Asks for a file to open (its box is the system's); file_chosen is called with the path, or
/// with the file name that the box began with, if the user gives up.
void ask_for_file();

// Other programs.

/// Replaces the content of the clipboard by a picture: a whole packed device-independent bitmap,
/// 40 bytes of header, colours, rows.
void set_clipboard(std::span<const std::uint8_t> dib);

/// Brings the window of another program to the foreground, by the number that the window system
/// knows it by. Nothing where windows have no such numbers, or no window has this one.
void activate_other_window(std::uint32_t number);

/// Starts another program; a failure is silent.
void start_program(const std::string& command);

/// Shows the help page; a message names the file if nothing here can show it.
void show_help(const std::string& path);

// The ports panel: a small tool window, which never keeps the focus.

/// Opens the panel, empty, at a place of the screen. False if it can't be.
bool open_ports_panel(PixelPoint at);
void close_ports_panel();

/// Puts a picture of 15 x 15 pixels (0xAARRGGBB, alpha 0 or 255, top row first) into the client
/// area of a window that lights are drawn in. The ports panel is window 1.
constexpr int ports_panel_window = 1;
constexpr int led_size = 15;
void draw_led(int window, PixelPoint at, std::span<const std::uint32_t> pixels);

}  // namespace orvanel
