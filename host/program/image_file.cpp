#include "host/program/image_file.h"

#include "firmware/store/ground/eeprom.h"

#include <cerrno>
#include <fstream>
#include <system_error>
#include <vector>

namespace orvanel {

std::string load_image(const std::string& path, int size) {
    eeprom_reset_to(size, {});
    std::ifstream file(path, std::ios::binary);
    std::vector<char> content(static_cast<std::size_t>(size));
    // Opening a folder works; only the read tells that it is none of ours.
    if (file) file.read(content.data(), size);
    if (!file.is_open() || file.bad()) return path + ": " + std::generic_category().message(errno);
    const std::vector<std::uint8_t> bytes(content.begin(), content.begin() + file.gcount());
    eeprom_reset_to(size, bytes);
    return {};
}

std::string save_image(const std::string& path, std::span<const std::uint8_t> image,
                       Backup backup) {
    const std::string reason = replace_file(path, image, backup);
    return reason.empty() ? "" : "cannot save " + path + ": " + reason;
}

}  // namespace orvanel
