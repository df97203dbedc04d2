// safe_file.h and folder_lock.h where this process is alone with its files, as in WebAssembly: what
// is outside sees to it that they survive.

#include "base/files.h"
#include "base/folder_lock.h"
#include "base/safe_file.h"

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <vector>

namespace orvanel {

namespace {

constexpr std::size_t max_kept = std::size_t{1} << 30;  // bytes

std::string write_file(const std::string& path, std::span<const std::uint8_t> content) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return errno_text();
    const bool written = std::fwrite(content.data(), 1, content.size(), file) == content.size();
    const std::string fault = errno_text();
    const bool closed = std::fclose(file) == 0;
    return written && closed ? "" : written ? errno_text() : fault;
}

std::string copy_file(const std::string& from, const std::string& to) {
    std::vector<std::uint8_t> content;
    const std::string fault = read_file(from, max_kept, content);
    return fault.empty() ? write_file(to, content) : fault;
}

}  // namespace

std::string replace_file(const std::string& path, std::span<const std::uint8_t> content,
                         Backup backup) {
    if (backup == Backup::keep)
        if (std::string fault = back_up(path); !fault.empty()) return fault;
    return write_file(path, content);
}

std::string free_name(const std::string& path) {
    std::error_code ignored;
    for (int number = 1;; ++number)
        if (std::string free = path + "." + std::to_string(number);
            !std::filesystem::exists(free, ignored))
            return free;
}

std::string keep_beside(const std::string& path, std::string& name) {
    name = free_name(path);
    return copy_file(path, name);
}

std::string back_up(const std::string& path) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) return {};
    return copy_file(path, path + ".bak");
}

std::string set_aside(const std::string& path) {
    std::string part = part_name(path);
    return std::rename(path.c_str(), part.c_str()) == 0 ? part : "";
}

void bring_back(const std::string& path, const std::string& aside) {
    std::rename(aside.c_str(), path.c_str());
}

std::string part_name(const std::string& path) { return path + ".part"; }

void clear_parts(const std::string& /*path*/) {}

FolderLock keep_folder_lock(const std::string& folder, std::string& fault) {
    std::error_code no_folder;
    std::filesystem::create_directories(folder, no_folder);
    if (!no_folder) return FolderLock::taken;
    fault = no_folder.message();
    return FolderLock::failed;
}

}  // namespace orvanel
