#include "host/program/program_folder.h"

#include "firmware/store/ground/eeprom.h"
#include "host/program/demo.h"
#include "host/program/image_file.h"
#include "host/program/ini_file.h"
#include "host/program/settings.h"
#include "seam/host_calls.h"
#include "seam/platform.h"

#include <cstdint>
#include <filesystem>
#include <span>
#include <system_error>

namespace orvanel {

namespace {

std::string open_folder;             // empty if none is
constinit bool former_kept = false;  // this run has saved the image, and kept what was there before

// Saves while the firmware runs. A download may end in several restarts, so one waits a little; and
// a disk may be full for a while, so one that failed is tried again.
constexpr std::int64_t save_delay_ms = 1000;
constexpr std::int64_t retry_ms = 10000;
constexpr std::int64_t not_due = -1;
constinit std::int64_t save_due_ms = not_due;
constinit std::span<const std::uint8_t> unsaved_copy{};  // taken, and not on the disk yet
std::string last_fault;

std::string path_of(const char* name) { return std::filesystem::path(open_folder) / name; }

std::string settings_path() { return path_of("simulator.ini"); }
std::string image_path() { return path_of("Orvanel42.bin"); }

/// Edits the file as it stands now: the user may have changed it since the start.
std::string save_settings() {
    const std::string path = settings_path();
    std::string ini;
    std::string fault = load_ini(path, ini);
    if (!fault.empty()) return "cannot save " + fault;
    const std::string former = ini;
    put_settings(ini);
    if (ini == former) return {};
    // The next start would refuse it.
    if (ini.size() > longest_ini)
        return "cannot save " + path + ": longer than " + std::to_string(longest_ini) + " bytes";
    const std::vector<std::uint8_t> bytes(ini.begin(), ini.end());
    fault = replace_file(path, bytes, Backup::none);
    return fault.empty() ? "" : "cannot save " + path + ": " + fault;
}

/// Only the first save of a run keeps the former file: a backup of what this run itself has saved
/// would be of no use to anybody.
std::string save_image_of_run(std::span<const std::uint8_t> image) {
    std::string fault = save_image(image_path(), image, former_kept ? Backup::none : Backup::keep);
    former_kept = former_kept || fault.empty();
    return fault;
}

bool copy_is_unsaved() { return eeprom_copy_waits() || !unsaved_copy.empty(); }

/// Saves the newest copy, if there is one. What is no plain file could make us wait; at the end a
/// signal can cut that short.
std::string save_copy() {
    if (eeprom_copy_waits()) unsaved_copy = eeprom_take_copy();
    if (unsaved_copy.empty()) return {};
    std::error_code ignored;
    const auto kind = std::filesystem::status(image_path(), ignored).type();
    if (kind != std::filesystem::file_type::regular &&
        kind != std::filesystem::file_type::not_found)
        return "cannot save " + image_path() + ": not a plain file";
    std::string fault = save_image_of_run(unsaved_copy);
    if (fault.empty()) unsaved_copy = {};
    return fault;
}

/// Saves the settings too. The result is what went wrong of both.
std::vector<std::string> save_settings_after(const std::string& image_fault) {
    const std::string settings_fault = save_settings();
    std::vector<std::string> faults;
    for (const std::string& fault : {image_fault, settings_fault})
        if (!fault.empty()) faults.push_back(fault);
    return faults;
}

}  // namespace

std::string open_program_folder(const std::string& folder, WithoutImage without) {
    std::error_code no_folder;
    std::filesystem::create_directories(folder, no_folder);
    if (no_folder) return folder + ": " + no_folder.message();
    open_folder = folder;
    former_kept = false;
    unsaved_copy = {};
    std::string ini;
    std::string fault = load_ini(settings_path(), ini);
    if (!fault.empty()) return fault;
    take_settings(ini, folder);
    eeprom_reset_to(eeprom_size, {});
    const std::string image = image_path();
    std::error_code no_image;
    const auto kind = std::filesystem::status(image, no_image).type();
    if (kind == std::filesystem::file_type::not_found) {
        if (without == WithoutImage::demo) start_demo_feed();
        return {};
    }
    if (no_image) return image + ": " + no_image.message();
    // Opening a pipe would wait for its other end.
    if (kind != std::filesystem::file_type::regular) return image + ": not a plain file";
    return load_image(image, eeprom_size);
}

std::vector<std::string> save_program_folder() {
    if (open_folder.empty()) return {};
    const bool programmed = eeprom_state == EepromState::programmed;
    return save_settings_after(programmed ? save_image_of_run(eeprom_bytes()) : "");
}

std::vector<std::string> save_running_folder() {
    if (open_folder.empty()) return {};
    return save_settings_after(save_copy());
}

void save_programmed_image() {
    if (open_folder.empty() || !copy_is_unsaved()) {
        save_due_ms = not_due;
        return;
    }
    const std::int64_t now = clock_ms();
    if (save_due_ms == not_due) save_due_ms = now + save_delay_ms;
    if (now < save_due_ms) return;
    const std::string fault = save_copy();
    save_due_ms = fault.empty() ? not_due : now + retry_ms;
    if (!fault.empty() && fault != last_fault) show_message("Error: HD Orvanel42 simulator", fault);
    last_fault = fault;
}

}  // namespace orvanel
