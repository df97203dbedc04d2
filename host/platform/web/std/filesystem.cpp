#include <climits>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <vector>

namespace std::filesystem {

namespace {

error_code last_fault() { return {errno, generic_category()}; }

file_status status_of(int result, const struct stat& what, error_code& fault) {
    fault.clear();
    if (result != 0) {
        fault = last_fault();
        const bool missing = errno == ENOENT || errno == ENOTDIR;
        return file_status(missing ? file_type::not_found : file_type::none);
    }
    if (S_ISREG(what.st_mode)) return file_status(file_type::regular);
    if (S_ISDIR(what.st_mode)) return file_status(file_type::directory);
    return file_status(S_ISLNK(what.st_mode) ? file_type::symlink : file_type::unknown);
}

bool is_there(file_type type) { return type != file_type::none && type != file_type::not_found; }

/// As the standard has it, that nothing is there is no fault of these questions.
bool answer(file_type is, bool yes, error_code& fault) {
    if (is == file_type::not_found) fault.clear();
    return yes;
}

size_t slash_before_name(const std::string& text) { return text.rfind('/'); }

}  // namespace

path path::filename() const {
    const size_t slash = slash_before_name(text_);
    return slash == std::string::npos ? text_ : text_.substr(slash + 1);
}

path path::parent_path() const {
    size_t end = slash_before_name(text_);
    if (end == std::string::npos) return {};
    while (end > 0 && text_[end - 1] == '/')
        --end;
    return end == 0 ? "/" : text_.substr(0, end);
}

path path::stem() const {
    const std::string name = filename().text_;
    const size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 || name == ".." ? name : name.substr(0, dot);
}

path& path::replace_extension(const path& extension) {
    const std::string name = filename().text_;
    text_.resize(text_.size() - name.size() + stem().text_.size());
    if (!extension.empty())
        text_ += (extension.text_.starts_with('.') ? "" : ".") + extension.text_;
    return *this;
}

path path::lexically_normal() const {
    if (empty()) return {};
    vector<std::string> parts;
    bool ends_in_folder = false;
    for (size_t at = 0; at < text_.size();) {
        const size_t end = min(text_.find('/', at), text_.size());
        const std::string part = text_.substr(at, end - at);
        at = end + 1;
        ends_in_folder = part.empty() || part == "." || part == "..";
        if (part.empty() || part == ".") continue;
        if (part != ".." || (!is_absolute() && (parts.empty() || parts.back() == "..")))
            parts.push_back(part);
        else if (!parts.empty())
            parts.pop_back();
    }
    if (text_.ends_with('/')) ends_in_folder = true;
    std::string normal = is_absolute() ? "/" : "";
    for (size_t i = 0; i < parts.size(); ++i)
        normal += (i == 0 ? "" : "/") + parts[i];
    if (parts.empty()) return is_absolute() ? "/" : ".";
    return ends_in_folder && parts.back() != ".." ? normal + "/" : normal;
}

file_status status(const path& file, error_code& fault) {
    struct stat what {};
    return status_of(stat(file.c_str(), &what), what, fault);
}

file_status symlink_status(const path& file, error_code& fault) {
    struct stat what {};
    return status_of(lstat(file.c_str(), &what), what, fault);
}

bool exists(const path& file, error_code& fault) {
    const file_type type = status(file, fault).type();
    return answer(type, is_there(type), fault);
}

bool is_regular_file(const path& file, error_code& fault) {
    const file_type type = status(file, fault).type();
    return answer(type, type == file_type::regular, fault);
}

bool is_directory(const path& file, error_code& fault) {
    const file_type type = status(file, fault).type();
    return answer(type, type == file_type::directory, fault);
}

bool is_symlink(const path& file, error_code& fault) {
    const file_type type = symlink_status(file, fault).type();
    return answer(type, type == file_type::symlink, fault);
}

uintmax_t file_size(const path& file, error_code& fault) {
    struct stat what {};
    fault.clear();
    if (stat(file.c_str(), &what) != 0)
        fault = last_fault();
    else if (!S_ISREG(what.st_mode))
        fault = make_error_code(S_ISDIR(what.st_mode) ? errc::is_a_directory : errc::not_supported);
    return fault ? static_cast<uintmax_t>(-1) : static_cast<uintmax_t>(what.st_size);
}

bool equivalent(const path& a, const path& b, error_code& fault) {
    struct stat one {
    }, other{};
    fault.clear();
    if (stat(a.c_str(), &one) != 0 || stat(b.c_str(), &other) != 0) {
        fault = last_fault();
        return false;
    }
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

path read_symlink(const path& link, error_code& fault) {
    array<char, PATH_MAX> target{};
    fault.clear();
    const ssize_t n = readlink(link.c_str(), target.data(), target.size());
    if (n >= 0) return std::string(target.data(), static_cast<size_t>(n));
    fault = last_fault();
    return {};
}

path current_path(error_code& fault) {
    fault.clear();
    return ".";
}

path absolute(const path& file, error_code& fault) {
    fault.clear();
    return file;
}

path weakly_canonical(const path& file, error_code& fault) {
    fault.clear();
    return file.lexically_normal();
}

bool create_directories(const path& folder, error_code& fault) {
    if (is_directory(folder, fault)) return false;
    const path parent = folder.parent_path();
    if (!parent.empty() && parent != folder) create_directories(parent, fault);
    fault.clear();
    if (mkdir(folder.c_str(), 0777) == 0) return true;
    fault = last_fault();
    return false;
}

bool remove(const path& file, error_code& fault) {
    fault.clear();
    if (unlink(file.c_str()) == 0 || (errno == EISDIR && rmdir(file.c_str()) == 0)) return true;
    if (errno != ENOENT) fault = last_fault();
    return false;
}

}  // namespace std::filesystem
