#include "base/safe_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace orvanel {

namespace {

namespace fs = std::filesystem;

constexpr mode_t any_mode = 0666;  // what the user's umask leaves of it

std::string reason() { return std::generic_category().message(errno); }

/// The file that a chain of links ends at, whether or not it is there; itself a link only if the
/// chain has no end.
fs::path target_of(const fs::path& path) {
    constexpr int most_links = 40;
    fs::path target = path;
    std::error_code fault;
    for (int i = 0; i < most_links && fs::is_symlink(target, fault); ++i)
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
    unlink(part.c_str());  // of a process that was killed under the same number
    const int fd = open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, any_mode);
    if (fd < 0) return false;
    if (former != nullptr) (void)fchmod(fd, former->st_mode & 07777);
    if (fill_and_close(fd, content, true)) return true;
    const int fault = errno;
    unlink(part.c_str());
    errno = fault;
    return false;
}

/// Gives the former file a second name, so that its first one exists at every moment. Where the
/// file system has no hard links it is copied. False with errno set.
bool keep_former(const fs::path& target, const std::string& number) {
    const std::string backup = target.string() + ".bak";
    const std::string part = backup + number;
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
    const bool renamed = std::rename(part.c_str(), backup.c_str()) == 0;
    const int fault = errno;
    // Renaming a name onto another of the same file does nothing and leaves both.
    unlink(part.c_str());
    errno = fault;
    return renamed;
}

/// The new name is on the disk only when its folder is. That can't fail in a way that would bring
/// the old file back, so nobody is told.
void flush_folder(const fs::path& target) {
    const fs::path folder = target.has_parent_path() ? target.parent_path() : ".";
    const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return;
    (void)fsync(fd);
    close(fd);
}

std::string write_device(const fs::path& target, std::span<const std::uint8_t> content) {
    const int fd = open(target.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    return fd >= 0 && fill_and_close(fd, content, false) ? "" : reason();
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

    // Two processes may write the same file at once; each has its own to begin with.
    const std::string number = "." + std::to_string(getpid()) + ".part";
    const std::string part = target.string() + number;
    if (!write_beside(part, content, exists ? &former : nullptr)) return reason();
    const bool kept = !exists || backup == Backup::none || keep_former(target, number);
    if (!kept || std::rename(part.c_str(), target.c_str()) != 0) {
        std::string fault = reason();
        unlink(part.c_str());
        return fault;
    }
    flush_folder(target);
    return {};
}

}  // namespace orvanel
