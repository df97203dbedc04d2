#include "host/program/program_folder.h"

#include "base/files.h"
#include "base/folder_lock.h"
#include "base/visible.h"
#include "firmware/store/ground/eeprom.h"
#include "host/program/demo.h"
#include "host/program/image_file.h"
#include "host/program/ini_file.h"
#include "host/program/settings.h"
#include "seam/host_calls.h"
#include "seam/platform.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <span>
#include <system_error>

namespace orvanel {

namespace {

namespace fs = std::filesystem;

std::string open_folder;  // empty if none is
std::string absolute_folder;
std::string ini_at_start;            // for a folder that has to be made again
constinit bool made_again = false;   // which has happened
std::string image_elsewhere;         // where the image goes if another program has the folder
constinit bool former_kept = false;  // this run has kept the image that was there before

// Saves while the firmware runs. A download may end in several restarts, so one waits a little; and
// a disk may be full for a while, so one that failed is tried again.
constexpr std::int64_t save_delay_ms = 1000;
constexpr std::int64_t retry_ms = 10000;
constexpr std::int64_t not_due = -1;
constinit std::int64_t save_due_ms = not_due;
constinit std::span<const std::uint8_t> unsaved_copy{};  // taken, and not on the disk yet
std::string last_fault;

std::string path_of(const char* name) { return fs::path(open_folder) / name; }

std::string settings_path() { return path_of("simulator.ini"); }
std::string image_path() { return path_of("Orvanel42.bin"); }

std::string link_fault(const std::string& path, const std::string& what) {
    std::error_code ignored;
    return path + " is a link to " + fs::read_symlink(path, ignored).string() + ", which is no " +
           what + "; take the link away";
}

/// A link may have come with the folder, and lead to a file that is nobody's to write over: only
/// one of the right content is.
std::string settings_link_fault(const std::string& ini) {
    std::error_code ignored;
    const std::string path = settings_path();
    const bool strange =
        fs::is_symlink(path, ignored) && (!fs::exists(path, ignored) || !are_settings(ini));
    return strange ? link_fault(path, "file of settings") : "";
}

std::string image_link_fault() {
    std::error_code fault;
    const std::string path = image_path();
    if (!fs::is_symlink(path, fault)) return {};
    const std::uintmax_t size = fs::file_size(path, fault);
    const bool image = !fault && (size == eeprom_small || size == eeprom_large);
    return image ? "" : link_fault(path, "EEPROM image");
}

/// The text of the settings, empty if there are none. The result is what is wrong with it.
std::string load_settings(std::string& ini) {
    std::string fault = load_ini(settings_path(), ini);
    return fault.empty() ? settings_link_fault(ini) : fault;
}

/// Tells of lines that are probably misspelt, on standard error in every program: a box at each
/// start would be a nuisance to whoever keeps lines of their own there, which is allowed.
void tell_unknown_settings(const std::string& ini) {
    constexpr std::size_t max_told = 5;
    const std::vector<std::string> unknown = unknown_settings(ini);
    for (std::size_t i = 0; i < unknown.size() && i < max_told; ++i)
        tell_user(settings_path() + ":" + unknown[i]);
    if (unknown.size() > max_told)
        tell_user(settings_path() + ": and " + std::to_string(unknown.size() - max_told) +
                  " lines more that mean nothing");
}

/// Makes sure that the folder is there and that we have it.
FolderLock keep_folder(std::string& fault) {
    // What is named from a folder that has been removed is nowhere.
    std::error_code gone;
    (void)fs::current_path(gone);
    if (gone) open_folder = absolute_folder;
    const FolderLock lock = keep_folder_lock(open_folder, fault);
    if (lock != FolderLock::taken_again) return lock;
    made_again = true;
    former_kept = false;
    return FolderLock::taken;
}

/// Edits the file as it stands now: the user may have changed it since the start.
std::string save_settings() {
    const std::string path = settings_path();
    std::string fault;
    if (keep_folder(fault) != FolderLock::taken) return "cannot save " + path + ": " + fault;
    std::string ini;
    fault = load_settings(ini);
    if (!fault.empty()) return "cannot save " + fault;
    if (made_again && ini.empty()) ini = ini_at_start;
    const std::string former = ini;
    put_settings(ini);
    std::error_code ignored;
    if (ini == former && fs::exists(path, ignored)) return {};
    // The next start would refuse it.
    if (ini.size() > max_ini_bytes)
        return "cannot save " + path + ": longer than " + std::to_string(max_ini_bytes) + " bytes";
    const std::vector<std::uint8_t> bytes(ini.begin(), ini.end());
    fault = replace_file(path, bytes, Backup::none);
    return fault.empty() ? "" : "cannot save " + path + ": " + fault;
}

/// The files of the folder are another program's by now, but the image must not be lost.
std::string save_elsewhere(std::span<const std::uint8_t> image, const std::string& why) {
    if (image_elsewhere.empty()) image_elsewhere = free_name(image_path());
    std::string fault = save_image(image_elsewhere, image, Backup::none);
    if (!fault.empty()) return fault;
    return "cannot save " + image_path() + ": " + why + "; the image is in " + image_elsewhere;
}

bool file_holds(const std::string& path, std::span<const std::uint8_t> image) {
    Bytes content;
    return read_file(path, image.size(), content).empty() &&
           std::equal(content.begin(), content.end(), image.begin(), image.end());
}

/// Only the first save of a run keeps the former file: a backup of what this run itself has saved
/// would be of no use to anybody.
std::string save_image_of_run(std::span<const std::uint8_t> image) {
    std::string fault;
    const FolderLock lock = keep_folder(fault);
    if (lock == FolderLock::held) return save_elsewhere(image, fault);
    if (lock == FolderLock::failed) return "cannot save " + image_path() + ": " + fault;
    if (fault = image_link_fault(); !fault.empty()) return "cannot save " + fault;
    // A disk that has filled up since would refuse what it has already.
    if (former_kept && file_holds(image_path(), image)) return {};
    fault = save_image(image_path(), image, former_kept ? Backup::none : Backup::keep);
    former_kept = former_kept || fault.empty();
    return fault;
}

/// One that was taken, but is withdrawn meanwhile, isn't saved any more.
bool copy_is_unsaved() {
    if (!eeprom_copy_stands()) unsaved_copy = {};
    return eeprom_copy_waits() || !unsaved_copy.empty();
}

/// Saves the newest copy, if there is one. What is no plain file could make us wait; at the end a
/// signal can cut that short.
std::string save_copy() {
    if (eeprom_copy_waits()) unsaved_copy = eeprom_take_copy();
    if (unsaved_copy.empty()) return {};
    std::error_code ignored;
    const auto kind = fs::status(image_path(), ignored).type();
    if (kind != fs::file_type::regular && kind != fs::file_type::not_found)
        return "cannot save " + image_path() + ": not a plain file";
    std::string fault = save_image_of_run(unsaved_copy);
    if (fault.empty()) unsaved_copy = {};
    return fault;
}

}  // namespace

std::string open_program_folder(const std::string& folder, WithoutImage without) {
    std::error_code no_folder;
    fs::create_directories(folder, no_folder);
    if (no_folder) return folder + ": " + no_folder.message();
    open_folder = folder;
    absolute_folder = fs::absolute(folder, no_folder);
    made_again = former_kept = false;
    image_elsewhere.clear();
    unsaved_copy = {};
    clear_parts(settings_path());
    clear_parts(image_path());
    std::string fault = load_settings(ini_at_start);
    if (!fault.empty()) return fault;
    tell_unknown_settings(ini_at_start);
    take_settings(ini_at_start, folder);
    eeprom_reset_to(eeprom_size, {});
    if (fault = image_link_fault(); !fault.empty()) return fault;
    const std::string image = image_path();
    std::error_code no_image;
    const auto kind = fs::status(image, no_image).type();
    if (kind == fs::file_type::not_found) {
        if (without == WithoutImage::demo) start_demo_feed();
        return {};
    }
    if (no_image) return image + ": " + no_image.message();
    // Opening a pipe would wait for its other end.
    if (kind != fs::file_type::regular) return image + ": not a plain file";
    return load_image(image, eeprom_size);
}

std::vector<std::string> save_program_folder() {
    if (open_folder.empty()) return {};
    const bool programmed = eeprom_state == EepromState::programmed;
    const std::string image_fault = programmed ? save_image_of_run(eeprom_bytes()) : "";
    const std::string settings_fault = save_settings();
    std::vector<std::string> faults;
    for (const std::string& fault : {image_fault, settings_fault})
        if (!fault.empty()) faults.push_back(fault);
    return faults;
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
    if (!image_notice.empty()) show_message("HD Orvanel42 simulator", image_notice);
    image_notice.clear();
}

std::string keep_former_image() {
    if (open_folder.empty() || former_kept) return {};
    std::string fault;
    // The files of the folder may be another program's by now; ours will go elsewhere.
    if (keep_folder(fault) == FolderLock::held) return {};
    fault = back_up(image_path());
    if (!fault.empty()) return "cannot keep a copy of " + image_path() + ": " + fault;
    former_kept = true;
    return {};
}

}  // namespace orvanel
