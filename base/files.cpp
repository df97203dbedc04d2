#include "base/files.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <system_error>

namespace orvanel {

namespace {

/// Why the path can't be opened without waiting, empty if it can.
std::string kind_fault(const std::string& path) {
    std::error_code fault;
    const auto kind = std::filesystem::status(path, fault).type();
    if (kind == std::filesystem::file_type::not_found) return "no such file";
    if (fault) return fault.message();
    return kind == std::filesystem::file_type::regular ? "" : "not a plain file";
}

/// The first bytes of what can be opened without waiting.
std::string read_start(const std::string& path, std::size_t max, Bytes& content) {
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) return errno_text();
    content.resize(max);
    const std::size_t n = std::fread(content.data(), 1, content.size(), file);
    const bool failed = std::ferror(file) != 0;
    std::string message = failed ? errno_text() : "";
    std::fclose(file);
    content.resize(n);
    return message;
}

}  // namespace

std::string read_file(const std::string& path, std::size_t max, Bytes& content) {
    if (std::string fault = kind_fault(path); !fault.empty()) return fault;
    std::error_code fault;
    const std::uintmax_t size = std::filesystem::file_size(path, fault);
    if (fault) return fault.message();
    if (size > max) return "longer than " + std::to_string(max) + " bytes";
    return read_start(path, static_cast<std::size_t>(size) + 1, content);  // at least one address
}

std::string read_file_start(const std::string& path, std::size_t max, Bytes& content) {
    if (std::string fault = kind_fault(path); !fault.empty()) return fault;
    // Room for as much as there is, however high the bound.
    std::error_code fault;
    const std::uintmax_t size = std::filesystem::file_size(path, fault);
    if (fault) return fault.message();
    return read_start(path, std::min<std::uintmax_t>(size + 1, max), content);
}

std::string unreadable(const std::string& path) {
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) return "no such file";
    if (!is_plain_file(path)) return "not a plain file";
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) return "can't be read";
    std::fclose(file);
    return {};
}

std::string file_fault(const std::string& path) {
    const std::string fault = unreadable(path);
    return fault.empty() ? "" : path + ": " + fault;
}

bool is_plain_file(const std::string& path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

std::string errno_text() { return errno_text(errno); }

std::string errno_text(int number) { return std::generic_category().message(number); }

bool is_same_file(const std::string& a, const std::string& b) {
    namespace fs = std::filesystem;
    std::error_code fault;
    if (fs::equivalent(a, b, fault)) return true;
    const auto whole = [&fault](const std::string& path) {
        return fs::weakly_canonical(fs::absolute(path, fault), fault);
    };
    return whole(a) == whole(b);
}

bool ends_in(std::string_view path, std::string_view ending) {
    if (path.size() <= ending.size()) return false;
    const auto same = [](char is, char wanted) {
        return (is >= 'A' && is <= 'Z' ? is - 'A' + 'a' : is) == wanted;
    };
    return std::equal(path.end() - std::ssize(ending), path.end(), ending.begin(), same);
}

}  // namespace orvanel
