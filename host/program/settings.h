// settings.h: what the user has chosen: the keys of simulator.ini, their defaults and their ranges.
// Each key has one word. Those that a lower layer reads stand there: com_baud, protocol_on and
// configured_address in link/ground/port.h, eeprom_size in firmware/store/ground/eeprom.h. The rest
// stand here and belong to the main thread, unless they are atomic. The page for users is
// docs/reference/settings.md.

#pragma once

#include "seam/platform.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvanel {

/// A setting of the line. What is in force stands in another word (link/ground/port.h). While that
/// is of this run alone, as `--serial` and `--protocol` or a device's name have it, `wanted` is
/// saved; else, and from the user's next choice on, what is in force.
struct LineSetting {
    std::int32_t wanted;  // as the settings had it at the start
    bool of_run;          // what is in force is of this run alone
};
extern LineSetting port_setting;      // 1..8, 0 for none; in force: com_port
extern LineSetting baud_setting;      // bits a second; in force: com_baud
extern LineSetting protocol_setting;  // 1 Pactlink, 0 plain bytes; in force: protocol_on

/// The touch beep is heard.
extern std::atomic<bool> beep_on;

/// The upper left corner of the window with its frame, in pixels of the screen.
extern int window_x;
extern int window_y;

/// Window pixels for each dot of the skin, 1..8. The setting `zoom` knows 1 to 3 and keeps the last
/// of these while the zoom is a larger one, which has a section of its own as long as it holds.
constexpr int max_view_zoom = 8;
extern int view_zoom;
void set_view_zoom(int zoom);

/// The panel of the output ports: open at start, and its upper left corner.
extern bool ports_visible;
extern int ports_x;
extern int ports_y;

extern bool view_rotated;   // the module stands upright, turned by 90 degrees
extern bool show_frame;     // a normal window, else one cut to the module's outline
extern bool always_on_top;  // the window stays above others

/// The model of the module: 0..2 fixed ones, custom_model one by the user's own choice of
/// lcd_type (0..2), lcd_polarizer (0..1) and lcd_backlight (0..5). A fixed one's model_apply
/// (host/skin/lcd_colours.h) writes its own into these three, and so they are saved.
constexpr int custom_model = 3;
extern int skin_model;
extern int lcd_type;
extern int lcd_polarizer;
extern int lcd_backlight;

/// The upper left corner of the dialog for the custom model.
extern int custom_dialog_x;
extern int custom_dialog_y;

/// What stands behind COM1 to COM8, as the user named it (docs/reference/settings.md): not yet
/// checked, and empty where a name was left out after the key. Never saved.
extern std::array<std::string, max_com_ports> port_devices;

/// Whether the text is empty or has a section of ours: any other belongs to somebody else.
bool are_settings(std::string_view ini);

/// Sets all words from the text of simulator.ini; a key that isn't there gives its default. The
/// links that its section [Ports] names are taken from `folder`. Before the firmware runs.
void take_settings(std::string_view ini, const std::string& folder);

/// The lines that nothing is taken from, since their section or key has no meaning here:
/// `LINE: no key 'baut' in [Orvanel42]; is it 'baud'?`
std::vector<std::string> unknown_settings(std::string_view ini);

/// Puts the settings into the text of simulator.ini, as they stand now. Those that are edited by
/// hand only, and all else in the text, stay as the user wrote them.
void put_settings(std::string& ini);

/// `KEY=VALUE` as it would be saved, none if no key has that name, whatever the case of its
/// letters.
std::optional<std::string> setting_line(std::string_view key);

/// All keys in their order; and these with commas between them.
std::vector<std::string_view> setting_names();
std::string setting_keys();

}  // namespace orvanel
