#include "host/program/image_file.h"

#include "base/files.h"
#include "firmware/store/ground/eeprom.h"

#include <filesystem>
#include <system_error>

namespace orvanel {

std::string image_notice;

namespace {

// The file that the last notice of a load is about, and the name that it foretells.
std::string notice_path, notice_name;

/// How much longer than `size` the plain file is, 0 if it isn't.
std::uintmax_t excess(const std::string& path, std::size_t size) {
    std::error_code fault;
    const std::uintmax_t length = std::filesystem::file_size(path, fault);
    return fault || length <= size ? 0 : length - size;
}

void note_longer_file(const std::string& path, int size) {
    notice_path.clear();
    const std::uintmax_t more = excess(path, static_cast<std::size_t>(size));
    if (more == 0) return;
    const std::uintmax_t length = more + static_cast<std::uintmax_t>(size);
    image_notice = path + " is longer than the module's memory: of " + std::to_string(length) +
                   " bytes only the first " + std::to_string(size) + " are used.";
    if (size < eeprom_large && length <= eeprom_large)
        image_notice += " With 64 KiB (memKB=64 in simulator.ini, or --mem 64) all are.";
    image_notice += " Before an image is saved as that file, it is renamed to ";
    notice_path = path;
    notice_name = free_name(path);
    image_notice += notice_name;
}

/// Keeps a file that is longer than what will replace it under a further name, which `name` then
/// is. Empty on success.
std::string keep_longer_file(const std::string& path, std::size_t size, std::string& name) {
    if (excess(path, size) == 0) return {};
    std::string fault = keep_beside(path, name);
    if (!fault.empty()) fault.insert(0, name + ": ");
    return fault;
}

}  // namespace

std::string load_image(const std::string& path, int size) {
    eeprom_reset_to(size, {});
    Bytes content;
    const std::string fault = read_file_start(path, static_cast<std::size_t>(size), content);
    if (!fault.empty()) return path + ": " + fault;
    eeprom_reset_to(size, content);
    note_longer_file(path, size);
    return {};
}

std::string save_image(const std::string& path, std::span<const std::uint8_t> image,
                       Backup backup) {
    std::string kept;
    std::string reason = keep_longer_file(path, image.size(), kept);
    if (reason.empty()) reason = replace_file(path, image, backup);
    std::error_code ignored;
    if (!reason.empty()) {
        if (!kept.empty()) std::filesystem::remove(kept, ignored);
        return "cannot save " + path + ": " + reason;
    }
    // Somebody may have taken the name that was foretold.
    if (!kept.empty() && (path != notice_path || kept != notice_name))
        image_notice = path + " was longer than the image that is saved there, and is now " + kept;
    return {};
}

}  // namespace orvanel
