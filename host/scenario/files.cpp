#include "host/scenario/files.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace orvanel {

namespace {

std::string system_message() { return std::generic_category().message(errno); }

/// False with errno set.
bool write_all(const std::string& path, std::span<const std::uint8_t> content) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return false;
    const bool written = std::fwrite(content.data(), 1, content.size(), file) == content.size();
    const int fault = errno;
    // The last bytes may only now leave the buffer, so closing can fail as well.
    const bool closed = std::fclose(file) == 0;
    if (!written) errno = fault;
    return written && closed;
}

}  // namespace

std::string read_file(const std::string& path, std::size_t most,
                      std::vector<std::uint8_t>& content) {
    std::error_code fault;
    const auto kind = std::filesystem::status(path, fault).type();
    if (kind == std::filesystem::file_type::not_found) return "no such file";
    if (fault) return fault.message();
    if (kind != std::filesystem::file_type::regular) return "not a plain file";
    const std::uintmax_t size = std::filesystem::file_size(path, fault);
    if (fault) return fault.message();
    if (size > most) return "longer than " + std::to_string(most) + " bytes";
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) return system_message();
    content.resize(static_cast<std::size_t>(size));
    const std::size_t n = std::fread(content.data(), 1, content.size(), file);
    const bool failed = std::ferror(file) != 0;
    const std::string message = failed ? system_message() : "";
    std::fclose(file);
    content.resize(n);
    return message;
}

std::string write_file(const std::string& path, std::span<const std::uint8_t> content) {
    std::error_code ignored;
    const auto kind = std::filesystem::status(path, ignored).type();
    if (kind != std::filesystem::file_type::regular &&
        kind != std::filesystem::file_type::not_found)
        return write_all(path, content) ? "" : system_message();
    // Through a link its target is replaced, and the link stays.
    const std::filesystem::path target = std::filesystem::weakly_canonical(path, ignored);
    const std::string name = target.empty() ? path : target.string();
    // Two processes may write the same picture at once; each has its own file to begin with.
    const std::string beside = name + "." + std::to_string(getpid()) + ".part";
    if (!write_all(beside, content)) {
        const std::string message = system_message();
        std::filesystem::remove(beside, ignored);
        return message;
    }
    std::error_code fault;
    std::filesystem::rename(beside, name, fault);
    if (!fault) return {};
    std::filesystem::remove(beside, ignored);
    return fault.message();
}

}  // namespace orvanel
