#include "host/program/settings.h"

#include "base/bytes.h"
#include "base/nearest.h"
#include "base/quoting.h"
#include "firmware/store/ground/eeprom.h"
#include "host/program/ini_file.h"
#include "link/ground/port.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <limits>

namespace orvanel {

constinit LineSetting port_setting{};
constinit LineSetting baud_setting{};
constinit LineSetting protocol_setting{1, false};
constinit std::atomic<bool> beep_on{false};
constinit int window_x = 0;
constinit int window_y = 0;
constinit int view_zoom = 1;
constinit bool ports_visible = false;
constinit int ports_x = 0;
constinit int ports_y = 0;
constinit bool view_rotated = false;
constinit bool show_frame = false;
constinit bool always_on_top = false;
constinit int skin_model = 0;
constinit int lcd_type = 0;
constinit int lcd_polarizer = 0;
constinit int lcd_backlight = 0;
constinit int custom_dialog_x = 0;
constinit int custom_dialog_y = 0;
std::array<std::string, max_com_ports> port_devices;

namespace {

constexpr std::string_view settings_section = "Orvanel42";
constexpr std::string_view ports_section = "Ports";
constexpr std::string_view view_section = "Orvanel42 View";
constexpr std::string_view zoom_key = "zoom";
constexpr int max_zoom_setting = 3;

constinit int zoom_setting = 1;  // the last zoom that the setting `zoom` can say
constexpr int bytes_per_kib = 1024;

/// Whether the program saves a setting, or only the user edits it.
enum class Kept : bool { saved, by_hand };

struct Setting {
    std::string_view key;
    std::int32_t otherwise;  // the value of a key that isn't there
    std::int32_t unread;     // the value of one that is no number
    void (*take)(std::int32_t value);
    std::string (*text)();  // as it is saved
    Kept kept;
};

// How a word takes a number, and how it is written.

template <auto& word> void number(std::int32_t value) { word = value; }

template <auto& word> void on_off(std::int32_t value) { word = value != 0; }

template <auto& word, int min, int max> void clamped(std::int32_t value) {
    word = std::clamp(value, min, max);
}

template <auto& word, int min, int max, int outside> void in_range(std::int32_t value) {
    word = value >= min && value <= max ? value : outside;
}

template <auto& word> std::string digits() { return std::to_string(static_cast<int>(word)); }

std::int32_t saved(const LineSetting& setting, std::int32_t in_force) {
    return setting.of_run ? setting.wanted : in_force;
}

void take_port(std::int32_t value) {
    port_setting.wanted = value >= 1 && value <= max_com_ports ? value : 0;
}

std::string port_text() {
    const std::int32_t in_force = com_port.load();
    const std::int32_t port = in_force < 0 ? port_setting.wanted : saved(port_setting, in_force);
    return port == 0 ? "none" : std::to_string(port);
}

void take_baud(std::int32_t value) {
    baud_setting.wanted = value;
    com_baud = value;
}

std::string baud_text() { return std::to_string(saved(baud_setting, com_baud.load())); }

void take_protocol(std::int32_t value) {
    protocol_setting = {value != 0 ? 1 : 0, false};
    protocol_on = value != 0;
}

std::string protocol_text() {
    return std::to_string(saved(protocol_setting, protocol_on.load() ? 1 : 0));
}

void take_zoom(std::int32_t value) {
    set_view_zoom(value >= 1 && value <= max_zoom_setting ? value : 1);
}

std::string zoom_text() {
    return std::to_string(view_zoom > max_zoom_setting ? zoom_setting : view_zoom);
}

void take_address(std::int32_t value) { configured_address = low8(value); }

void take_memory(std::int32_t kib) { eeprom_size = kib == 64 ? eeprom_large : eeprom_small; }

std::string memory_text() { return std::to_string(eeprom_size / bytes_per_kib); }

// clang-format off
constexpr Setting settings[]{
    {"com",             0,    0, take_port,                              port_text,             Kept::saved},
    {"baud",       115200, 9600, take_baud,                              baud_text,                  Kept::saved},
    {"protocol",        1,    0, take_protocol,                          protocol_text,              Kept::saved},
    {"adr",             7,    0, take_address,                           digits<configured_address>, Kept::by_hand},
    {"beep",            0,    0, on_off<beep_on>,                        digits<beep_on>,            Kept::saved},
    {"xpos",          100,    0, number<window_x>,                       digits<window_x>,           Kept::saved},
    {"ypos",           60,    0, number<window_y>,                       digits<window_y>,           Kept::saved},
    {"zoom",            1,    0, take_zoom,                              zoom_text,                  Kept::saved},
    {"iopvisible",      0,    0, on_off<ports_visible>,                  digits<ports_visible>,      Kept::saved},
    {"iopx",            0,    0, number<ports_x>,                        digits<ports_x>,            Kept::saved},
    {"iopy",            0,    0, number<ports_y>,                        digits<ports_y>,            Kept::saved},
    {"View90",          0,    0, on_off<view_rotated>,                   digits<view_rotated>,       Kept::saved},
    {"ShowWindow",      1,    0, on_off<show_frame>,                     digits<show_frame>,         Kept::saved},
    {"ontop",           0,    0, on_off<always_on_top>,                  digits<always_on_top>,      Kept::saved},
    {"viewkit",         0,    0, in_range<skin_model, 0, 3, 0>,          digits<skin_model>,         Kept::saved},
    {"vkctyp",          1,    0, clamped<lcd_type, 0, 2>,                digits<lcd_type>,           Kept::saved},
    {"vkcpol",          1,    0, clamped<lcd_polarizer, 0, 1>,           digits<lcd_polarizer>,      Kept::saved},
    {"vkcbl",           0,    0, clamped<lcd_backlight, 0, 5>,           digits<lcd_backlight>,      Kept::saved},
    {"custx",           0,    0, number<custom_dialog_x>,                digits<custom_dialog_x>,    Kept::saved},
    {"custy",           0,    0, number<custom_dialog_y>,                digits<custom_dialog_y>,    Kept::saved},
    {"memKB",          32,    0, take_memory,                            memory_text,                Kept::by_hand},
};
// clang-format on

/// The number that the text begins with, clamped to its type; `unread` if it begins with none.
std::int32_t number_from(std::string_view text, std::int32_t unread) {
    using Limits = std::numeric_limits<std::int32_t>;
    text.remove_prefix(std::min(text.find_first_not_of(" \t\v\f\r"), text.size()));
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    if (text.empty() || text.front() < '0' || text.front() > '9') return unread;
    std::int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') break;
        value = std::min<std::int64_t>(value * 10 + (c - '0'), std::int64_t{Limits::max()} + 1);
    }
    if (negative) value = -value;
    return static_cast<std::int32_t>(std::min<std::int64_t>(value, Limits::max()));
}

/// The device behind COM`number`. A link to a pseudo terminal is named from the folder of the
/// settings, wherever the program was started.
std::string port_device(std::string_view ini, int number, const std::string& folder) {
    const std::string name = "COM" + std::to_string(number);
    const auto written = ini_value(ini, ports_section, name);
    if (!written.has_value()) return "/dev/ttyS" + std::to_string(number - 1);
    std::string device(*written);
    const std::string with_link = "pty:";
    if (!device.starts_with(with_link) || device.size() == with_link.size()) return device;
    const std::string link = device.substr(with_link.size());
    return with_link + (std::filesystem::path(folder) / link).string();
}

/// The keys of a section of ours, empty for another one.
std::vector<std::string_view> keys_of(std::string_view section) {
    static constexpr std::string_view port_names[max_com_ports]{"COM1", "COM2", "COM3", "COM4",
                                                                "COM5", "COM6", "COM7", "COM8"};
    std::vector<std::string_view> keys;
    if (same_name(section, ports_section)) keys.assign(port_names, std::end(port_names));
    if (same_name(section, view_section)) keys = {zoom_key};
    if (same_name(section, settings_section))
        for (const Setting& setting : settings)
            keys.push_back(setting.key);
    return keys;
}

/// What is wrong with the line, empty if it is one of ours.
std::string unknown_in(const IniLine& line) {
    const std::string home = "[" + std::string(settings_section) + "]";
    if (!line.section.has_value()) return "stands before any section; the settings are in " + home;
    const std::vector<std::string_view> keys = keys_of(*line.section);
    if (line.is_head)
        return !keys.empty()
                   ? ""
                   : "no section " + in_quotes(*line.section) +
                         is_it(*line.section, {settings_section, ports_section, view_section});
    if (keys.empty()) return {};  // all that stands in another's section is another's
    if (line.key.empty()) return "no KEY=VALUE, and no comment, which begins with ;";
    const bool known = std::ranges::any_of(
        keys, [&line](std::string_view key) { return same_name(key, line.key); });
    return known ? ""
                 : "no key " + in_quotes(line.key) + " in [" + std::string(*line.section) + "]" +
                       is_it(line.key, keys);
}

}  // namespace

std::vector<std::string> unknown_settings(std::string_view ini) {
    std::vector<std::string> unknown;
    for (const IniLine& line : ini_lines(ini))
        if (const std::string fault = unknown_in(line); !fault.empty())
            unknown.push_back(std::to_string(line.number) + ": " + fault);
    return unknown;
}

bool are_settings(std::string_view ini) {
    return ini.empty() || has_ini_section(ini, settings_section);
}

void take_settings(std::string_view ini, const std::string& folder) {
    for (const Setting& setting : settings) {
        const auto text = ini_value(ini, settings_section, setting.key);
        setting.take(text.has_value() ? number_from(*text, setting.unread) : setting.otherwise);
    }
    const std::int32_t large = number_from(ini_value(ini, view_section, zoom_key).value_or(""), 0);
    if (large > max_zoom_setting && large <= max_view_zoom) set_view_zoom(large);
    for (int number = 1; number <= max_com_ports; ++number)
        port_devices[static_cast<std::size_t>(number - 1)] = port_device(ini, number, folder);
}

void put_settings(std::string& ini) {
    for (const Setting& setting : settings)
        if (setting.kept == Kept::saved)
            set_ini_value(ini, settings_section, setting.key, setting.text());
    if (view_zoom > max_zoom_setting)
        set_ini_value(ini, view_section, zoom_key, std::to_string(view_zoom));
    else
        remove_ini_value(ini, view_section, zoom_key);
}

void set_view_zoom(int zoom) {
    view_zoom = zoom;
    if (zoom <= max_zoom_setting) zoom_setting = zoom;
}

std::optional<std::string> setting_line(std::string_view key) {
    for (const Setting& setting : settings)
        if (same_name(setting.key, key)) return std::string(setting.key) + '=' + setting.text();
    return std::nullopt;
}

std::vector<std::string_view> setting_names() { return keys_of(settings_section); }

std::string setting_keys() {
    std::string keys;
    for (const Setting& setting : settings)
        keys.append(keys.empty() ? "" : ", ").append(setting.key);
    return keys;
}

}  // namespace orvanel
