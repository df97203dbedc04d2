#include "host/window/roof/menu_command.h"

#include "base/bytes.h"
#include "firmware/core/ground/requests.h"
#include "host/bridge/bridge.h"
#include "host/import/picture_import.h"
#include "host/program/demo.h"
#include "host/program/settings.h"
#include "host/skin/lcd_colours.h"
#include "host/skin/outline.h"
#include "host/skin/view.h"
#include "host/trace/places.h"
#include "host/window/ground/boxes.h"
#include "host/window/ground/dialog.h"
#include "host/window/ground/menu.h"
#include "host/window/ground/ports_panel.h"
#include "host/window/ground/title.h"
#include "link/feeds/feeds.h"
#include "link/ground/port.h"
#include "link/roof/com_port.h"
#include "seam/window_system.h"

#include <algorithm>
#include <string>

namespace orvanel {

namespace {

std::string help_path;
std::string terminal_path;

// What the items do; `which` counts from the first one of a group.

void reset(int which) { request_restart(low8(which)); }

void demo(int /*which*/) {
    start_demo_feed();
    note_feed(feed_number(), "the demo", false, acting_scenario_line());
}

void open(int /*which*/) { ask_for_file(); }

void copy_display(int /*which*/) { set_clipboard(dib_block(*view_lcd)); }

void show_terminal(int /*which*/) {
    if (!activate_terminal()) start_program(terminal_path);
}

void leave(int /*which*/) { close_window_soon(); }

/// The window gets the size of the present zoom and rotation, and its outline again.
void fit_window() {
    resize_window();
    if (!show_frame) window_cut_to_skin();
}

void choose_zoom(int zoom) {
    if (zoom == view_zoom) return;
    set_view_zoom(zoom);
    menu_mark_view();
    fit_window();
}

void zoom_from_menu(int which) { choose_zoom(which + 1); }

void zoom_from_key(int which) { choose_zoom(max_menu_zoom + 1 + which); }

void rotate(int /*which*/) {
    view_rotated = !view_rotated;
    choose_view();
    menu_mark_view();
    fit_window();
}

void switch_frame(int /*which*/) {
    show_frame = !show_frame;
    if (show_frame)
        window_show_frame();
    else
        window_cut_to_skin();
    window_repaint();
    menu_mark_view();
}

void switch_on_top(int /*which*/) {
    always_on_top = !always_on_top;
    set_window_on_top(always_on_top);
    menu_mark_view();
}

void switch_panel(int /*which*/) {
    if (ports_opened())
        ports_close();
    else
        ports_open();
    menu_mark_view();
}

void choose_model(int which) {
    skin_model = which;
    model_apply();
    window_repaint();
    menu_mark_view();
}

void choose_own_model(int /*which*/) { open_custom_type_dialog(); }

void choose_baud(int which) {
    const std::int32_t baud = line_speeds[static_cast<std::size_t>(which)];
    if (baud == com_baud.load()) return;
    com_select(com_port.load(), baud);
    baud_setting.of_run = false;
    title_update();
    menu_mark_baud();
}

void switch_protocol(int /*which*/) { choose_framing(!protocol_on.load()); }

void switch_beep(int /*which*/) {
    beep_on.store(!beep_on.load());
    menu_mark_switches();
}

void help(int /*which*/) { show_help(help_path); }

void about(int /*which*/) { open_about_dialog(); }

struct Action {
    int first, last;  // ids
    void (*run)(int which);
};

constexpr int max_zoom_key = menu_zoom + max_view_zoom;

// clang-format off
constexpr Action actions[]{
    {item_reset,     item_reset + 3,                  reset},
    {item_demo,      item_demo,                       demo},
    {item_open,      item_open,                       open},
    {item_clipboard, item_clipboard,                  copy_display},
    {item_terminal,  item_terminal,                   show_terminal},
    {item_exit,      item_exit,                       leave},
    {item_zoom,      item_zoom + max_menu_zoom - 1,  zoom_from_menu},
    {item_rotate,    item_rotate,                     rotate},
    {item_frame,     item_frame,                      switch_frame},
    {item_on_top,    item_on_top,                     switch_on_top},
    {item_panel,     item_panel,                      switch_panel},
    {item_model,     item_model + custom_model - 1,   choose_model},
    {item_model + custom_model, item_model + custom_model, choose_own_model},
    {item_port,      item_port + max_com_ports,      choose_port},
    {item_baud,      item_baud + std::ssize(line_speeds) - 1, choose_baud},
    {item_protocol,  item_protocol,                   switch_protocol},
    {item_beep,      item_beep,                       switch_beep},
    {item_help,      item_help,                       help},
    {item_about,     item_about,                      about},
    {menu_zoom + max_menu_zoom + 1, max_zoom_key,   zoom_from_key},
};
// clang-format on

}  // namespace

void menu_command(int id) {
    const auto found = std::ranges::find_if(
        actions, [id](const Action& a) { return id >= a.first && id <= a.last; });
    if (found == std::end(actions) || postpone([id] { menu_command(id); })) return;
    found->run(id - found->first);
}

void zoom_by_wheel(int steps) {
    if (!box_is_open()) choose_zoom(std::clamp(view_zoom + steps, 1, max_view_zoom));
}

void file_chosen(std::string_view path) { open_feed(path, 0, 0); }

void ports_boxed() {
    ports_close();
    menu_mark_view();
}

void choose_port(int port) {
    if (port == com_port.load()) return;
    com_select(port, com_baud.load());
    port_setting.of_run = false;
    title_update();
    menu_mark_port();
}

void choose_framing(bool framed) {
    choose_protocol(framed);
    protocol_setting.of_run = false;
    menu_mark_switches();
    title_update();
}

void set_companions(std::string_view help_page, std::string_view terminal_command) {
    help_path = help_page;
    terminal_path = terminal_command;
}

}  // namespace orvanel
