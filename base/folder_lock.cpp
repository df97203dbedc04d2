#include "base/folder_lock.h"

#include "base/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace orvanel {

namespace {

constexpr std::size_t max_lock = 4096;  // bytes of a lock file

constinit int folder_fd = -1;             // -1: no folder is locked
constinit bool folder_is_locked = false;  // itself, which not every file system can
constinit int lock_fd = -1;               // of the lock file, -1 if there is none
constinit bool lock_is_ours = false;      // we may write it
constinit bool lock_is_wanted = false;
std::string socket_told;

void close_fd(int& fd) {
    if (fd >= 0) close(fd);
    fd = -1;
}

/// The start of a plain file; nothing of any other.
std::string start_of(int fd) {
    struct stat what {};
    if (fstat(fd, &what) != 0 || !S_ISREG(what.st_mode)) return {};
    std::string text(max_lock, '\0');
    const ssize_t n = pread(fd, text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(n, 0)));
    return text;
}

LockContent content_of(std::string_view text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view rest = text.substr(std::min(end + 1, text.size()));
    return {std::string(text.substr(0, end)), std::string(rest.substr(0, rest.find('\n')))};
}

std::string text_of(const LockContent& content) {
    return content.socket + "\n" + content.process + "\n";
}

/// Whether a file of that text may be written over: nothing else looks like it.
bool is_lock_text(const std::string& text) {
    if (text.empty()) return true;
    const LockContent content = content_of(text);
    const bool number = !content.process.empty() &&
                        content.process.find_first_not_of("0123456789") == std::string::npos;
    return number && (content.socket.empty() || content.socket.front() == '/') &&
           text == text_of(content);
}

/// Whether the file that is open is a lock file, or may become one: a link, also a hard one, would
/// have us write over a file of somebody's.
bool is_lock_file(int fd) {
    struct stat what {};
    return fstat(fd, &what) == 0 && S_ISREG(what.st_mode) && what.st_nlink == 1 &&
           is_lock_text(start_of(fd));
}

bool lock(int fd) { return flock(fd, LOCK_EX | LOCK_NB) == 0; }

/// Locks the file too, for file systems that lock no folder. Where it can't be written the folder's
/// lock is enough, but one that another user has written may be held by him.
FolderLock lock_file(const std::string& path, std::string& fault) {
    constexpr int common = O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW;
    lock_fd = open(path.c_str(), O_RDWR | O_CREAT | common, 0644);
    lock_is_ours = lock_fd >= 0;
    const bool strange = lock_fd >= 0 ? !is_lock_file(lock_fd) : errno == ELOOP || errno == EISDIR;
    if (strange) {
        fault = path + " is something else than a lock file; take it away";
        return FolderLock::failed;
    }
    if (lock_fd < 0) lock_fd = open(path.c_str(), O_RDONLY | common);
    if (lock_fd >= 0 ? lock(lock_fd) : folder_is_locked) return FolderLock::taken;
    if (lock_fd >= 0 && errno == EWOULDBLOCK) return FolderLock::held;
    fault = path + ": " + errno_text();
    return FolderLock::failed;
}

FolderLock lock_both(const std::string& folder, std::string& fault) {
    folder_fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder_fd < 0) {
        fault = folder + ": " + errno_text();
        return FolderLock::failed;
    }
    folder_is_locked = lock(folder_fd);
    if (!folder_is_locked && errno == EWOULDBLOCK) return FolderLock::held;
    return lock_file(lock_path(folder), fault);
}

void drop_lock_file() {
    close_fd(lock_fd);
    lock_is_ours = false;
}

void unlock() {
    drop_lock_file();
    close_fd(folder_fd);
    folder_is_locked = false;
}

/// The folder has been ours all along, and only the file has gone: without one nobody finds us, and
/// that is all.
void make_lock_file_again(const std::string& folder) {
    std::string ignored;
    drop_lock_file();
    if (lock_file(lock_path(folder), ignored) == FolderLock::taken)
        tell_socket(socket_told);
    else
        drop_lock_file();
}

/// Whether the path still names what is open.
bool names(const std::string& path, int fd) {
    struct stat there {};
    struct stat ours {};
    return lstat(path.c_str(), &there) == 0 && fstat(fd, &ours) == 0 &&
           there.st_dev == ours.st_dev && there.st_ino == ours.st_ino;
}

}  // namespace

std::string lock_path(const std::string& folder) {
    return std::filesystem::path(folder) / "Orvanel42.lock";
}

LockContent read_lock(const std::string& folder) {
    const int fd = open(lock_path(folder).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return {};
    const LockContent content = content_of(start_of(fd));
    close(fd);
    return content;
}

FolderLock lock_folder(const std::string& folder, std::string& fault) {
    std::error_code no_folder;
    std::filesystem::create_directories(folder, no_folder);
    if (no_folder) {
        fault = folder + ": " + no_folder.message();
        return FolderLock::failed;
    }
    unlock();
    lock_is_wanted = true;
    const FolderLock lock = lock_both(folder, fault);
    if (lock == FolderLock::taken) {
        tell_socket(socket_told);
        return lock;
    }
    unlock();
    if (lock == FolderLock::held) {
        fault = folder + " is in use by another program";
        if (const std::string process = read_lock(folder).process; !process.empty())
            fault += " (process " + process + ")";
    }
    return lock;
}

FolderLock keep_folder_lock(const std::string& folder, std::string& fault) {
    const bool same_folder = folder_fd >= 0 && names(folder + "/.", folder_fd);
    const bool same_file = lock_fd < 0 || names(lock_path(folder), lock_fd);
    if (same_folder && !same_file && folder_is_locked) make_lock_file_again(folder);
    if (same_folder && (same_file || folder_is_locked)) return FolderLock::taken;
    if (lock_is_wanted) {
        const FolderLock lock = lock_folder(folder, fault);
        return lock == FolderLock::taken ? FolderLock::taken_again : lock;
    }
    std::error_code no_folder;
    const bool made = std::filesystem::create_directories(folder, no_folder);
    if (no_folder) fault = folder + ": " + no_folder.message();
    return no_folder ? FolderLock::failed : made ? FolderLock::taken_again : FolderLock::taken;
}

bool lock_is_told() { return lock_is_ours; }

std::string lock_identity() {
    struct stat what {};
    fstat(lock_fd, &what);
    return std::to_string(what.st_dev) + "-" + std::to_string(what.st_ino);
}

void tell_socket(const std::string& path) {
    socket_told = path;
    if (!lock_is_ours) return;
    const std::string text = text_of({path, std::to_string(getpid())});
    if (ftruncate(lock_fd, 0) != 0) return;
    [[maybe_unused]] const ssize_t written = pwrite(lock_fd, text.data(), text.size(), 0);
}

}  // namespace orvanel
