#include "base/safe_file.h"

#include "base/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace orvanel {

namespace {

namespace fs = std::filesystem;

constexpr mode_t any_mode = 0666;  // what the user's umask leaves of it

/// The file that a chain of links ends at, whether or not it is there; itself a link only if the
/// chain has no end.
fs::path target_of(const fs::path& path) {
    constexpr int max_links = 40;
    fs::path target = path;
    std::error_code fault;
    for (int i = 0; i < max_links && fs::is_symlink(target, fault); ++i)
        target = target.parent_path() / fs::read_symlink(target, fault);
    return target;
}

/// Writes the whole content to `fd` and closes it, flushed to the disk if it is a plain file. False
/// with errno set.
bool fill_and_close(int fd, std::span<const std::uint8_t> content, bool flush) {
    bool good = true;
    while (good && !content.empty()) {
        const ssize_t n = write(fd, content.data(), content.size());
        if (n >= 0)
            content = content.subspan(static_cast<std::size_t>(n));
        else
            good = errno == EINTR && flush;  // a device may keep us waiting when we are to end
    }
    // Of a signal that comes meanwhile only some network file systems tell.
    while (good && flush && fsync(fd) != 0)
        good = errno == EINTR;
    const int fault = errno;
    // Some file systems tell only here that the bytes found no room.
    const bool closed = close(fd) == 0;
    if (!good) errno = fault;
    return good && closed;
}

/// Writes a new plain file, with the mode of the one that it will replace. False with errno set,
/// and nothing left lying about.
bool write_beside(const fs::path& part, std::span<const std::uint8_t> content,
                  const struct stat* former) {
    const int fd = open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, any_mode);
    if (fd < 0) return false;
    if (former != nullptr) (void)fchmod(fd, former->st_mode & 07777);
    if (fill_and_close(fd, content, true)) return true;
    const int fault = errno;
    unlink(part.c_str());
    errno = fault;
    return false;
}

bool is_write_protected(const fs::path& file) {
    struct stat what {};
    if (stat(file.c_str(), &what) != 0 || !S_ISREG(what.st_mode)) return false;
    // Root may write to any file; but who has taken the right from everybody means him too.
    constexpr mode_t any_write = S_IWUSR | S_IWGRP | S_IWOTH;
    return (what.st_mode & any_write) == 0 || (access(file.c_str(), W_OK) != 0 && errno == EACCES);
}

/// The first name with a number after it that nothing has.
std::string numbered(const std::string& name) {
    struct stat ignored {};
    for (int number = 1;; ++number)
        if (std::string free = name + "." + std::to_string(number);
            lstat(free.c_str(), &ignored) != 0)
            return free;
}

/// Where the former file goes: its backup's usual place, unless a user has something else there.
std::string backup_of(const fs::path& target) {
    std::string name = target.string() + ".bak";
    std::error_code ignored;
    const bool taken =
        fs::is_directory(fs::symlink_status(name, ignored)) || is_write_protected(name);
    return taken ? numbered(name) : name;
}

/// Gives the file a second name, in place of what has that, so that its first one exists at every
/// moment. Where the file system has no hard links it is copied. False with errno set.
bool name_also(const fs::path& target, const std::string& name) {
    const std::string part = part_name(name);
    unlink(part.c_str());
    if (link(target.c_str(), part.c_str()) != 0) {
        std::error_code fault;
        fs::copy_file(target, part, fault);
        if (fault) {
            unlink(part.c_str());
            errno = fault.value();
            return false;
        }
    }
    const bool renamed = std::rename(part.c_str(), name.c_str()) == 0;
    const int fault = errno;
    // Renaming a name onto another of the same file does nothing and leaves both.
    unlink(part.c_str());
    errno = fault;
    return renamed;
}

fs::path folder_of(const fs::path& target) {
    return target.has_parent_path() ? target.parent_path() : ".";
}

/// The process in a name that part_name has made of `file`, -1 if it is none.
pid_t process_of_part(std::string_view name, std::string_view file) {
    constexpr std::string_view ending = ".part";
    if (!name.starts_with(file) || !name.ends_with(ending)) return -1;
    name.remove_prefix(file.size());
    name.remove_suffix(std::min(name.size(), ending.size()));
    if (!name.starts_with('.')) return -1;
    int process = -1;
    const auto [end, fault] = std::from_chars(name.data() + 1, name.data() + name.size(), process);
    return fault == std::errc() && end == name.data() + name.size() ? process : -1;
}

bool is_gone(pid_t process) {
    return process > 0 && (process == getpid() || (kill(process, 0) != 0 && errno == ESRCH));
}

/// The new name is on the disk only when its folder is. That can't fail in a way that would bring
/// the old file back, so nothing is said.
void flush_folder(const fs::path& target) {
    const int fd = open(folder_of(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    (void)fsync(fd);
    close(fd);
}

std::string write_device(const fs::path& target, std::span<const std::uint8_t> content) {
    const int fd = open(target.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    return fd >= 0 && fill_and_close(fd, content, false) ? "" : errno_text();
}

}  // namespace

std::string replace_file(const std::string& path, std::span<const std::uint8_t> content,
                         Backup backup) {
    const fs::path target = target_of(path);
    std::error_code ignored;
    if (fs::is_symlink(target, ignored))
        return std::make_error_code(std::errc::too_many_symbolic_link_levels).message();
    struct stat former {};
    const bool exists = stat(target.c_str(), &former) == 0;
    if (exists && !S_ISREG(former.st_mode)) return write_device(target, content);
    if (is_write_protected(target)) return "write-protected";

    clear_parts(target);
    // Two processes may write the same file at once; each has its own to begin with.
    const std::string part = part_name(target);
    if (!write_beside(part, content, exists ? &former : nullptr)) return errno_text();
    const bool kept = !exists || backup == Backup::none || name_also(target, backup_of(target));
    if (!kept || std::rename(part.c_str(), target.c_str()) != 0) {
        std::string fault = errno_text();
        unlink(part.c_str());
        return fault;
    }
    flush_folder(target);
    return {};
}

std::string free_name(const std::string& path) { return numbered(target_of(path)); }

std::string keep_beside(const std::string& path, std::string& name) {
    const fs::path target = target_of(path);
    name = numbered(target);
    return name_also(target, name) ? "" : errno_text();
}

std::string back_up(const std::string& path) {
    const fs::path target = target_of(path);
    std::error_code ignored;
    if (!fs::is_regular_file(target, ignored)) return {};
    return name_also(target, backup_of(target)) ? "" : errno_text();
}

std::string set_aside(const std::string& path) {
    const fs::path target = target_of(path);
    struct stat former {};
    if (stat(target.c_str(), &former) != 0 || !S_ISREG(former.st_mode) || former.st_size == 0 ||
        access(target.c_str(), W_OK) != 0)
        return {};
    clear_parts(target);
    std::string part = part_name(target);
    if (std::rename(target.c_str(), part.c_str()) != 0) return {};
    const int fd = open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, any_mode);
    if (fd < 0) return part;
    (void)fchmod(fd, former.st_mode & 07777);
    close(fd);
    return part;
}

void bring_back(const std::string& path, const std::string& aside) {
    std::rename(aside.c_str(), target_of(path).c_str());
}

std::string part_name(const std::string& path) {
    return path + "." + std::to_string(getpid()) + ".part";
}

bool is_part_of(std::string_view name, std::string_view file) {
    return process_of_part(name, file) > 0;
}

void clear_parts(const std::string& path) {
    const fs::path target = target_of(path);
    const std::string file = target.filename();
    std::error_code fault, ignored;
    for (fs::directory_iterator at(folder_of(target), fault), end; !fault && at != end;
         at.increment(fault)) {
        const std::string name = at->path().filename();
        const bool left =
            is_gone(process_of_part(name, file)) || is_gone(process_of_part(name, file + ".bak"));
        // What writes a file makes a plain one; a folder or a link of such a name is somebody's.
        if (left && fs::is_regular_file(at->symlink_status(ignored)))
            fs::remove(at->path(), ignored);
    }
}

}  // namespace orvanel
