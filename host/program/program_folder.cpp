#include "host/program/program_folder.h"

#include "firmware/store/ground/eeprom.h"
#include "host/program/demo.h"
#include "host/program/image_file.h"
#include "host/program/ini_file.h"
#include "host/program/settings.h"

#include <cstdint>
#include <filesystem>
#include <system_error>

namespace orvanel {

namespace {

std::string open_folder;  // empty if none is

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

}  // namespace

std::string open_program_folder(const std::string& folder, WithoutImage without) {
    std::error_code no_folder;
    std::filesystem::create_directories(folder, no_folder);
    if (no_folder) return folder + ": " + no_folder.message();
    open_folder = folder;
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
    std::vector<std::string> faults;
    if (open_folder.empty()) return faults;
    std::string image_fault;
    if (eeprom_state == EepromState::programmed)
        image_fault = save_image(image_path(), Backup::keep);
    const std::string settings_fault = save_settings();
    for (const std::string& fault : {image_fault, settings_fault})
        if (!fault.empty()) faults.push_back(fault);
    return faults;
}

}  // namespace orvanel
