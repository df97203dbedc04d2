#include "kit/output.h"

#include "base/files.h"
#include "base/safe_file.h"
#include "base/standard_output.h"
#include "base/visible.h"
#include "host/platform/system/wake.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace orvanel {

namespace {

namespace fs = std::filesystem;

// Where a folder's files wait until all of them are written.
constexpr const char* waiting_folder = "unfinished-dump";

bool is_plain(const fs::directory_entry& entry) {
    std::error_code ignored;
    return fs::is_regular_file(entry.symlink_status(ignored));
}

/// Whether a former dump of these files has put this there to wait, whole or half written.
bool waited(const fs::directory_entry& entry, const std::vector<DumpFile>& files) {
    const std::string name = entry.path().filename().string();
    return is_plain(entry) && std::ranges::any_of(files, [&](const DumpFile& file) {
               return name == file.name || is_part_of(name, file.name);
           });
}

/// Whether it has brought this to its place: it is what would be written there now.
bool arrived(const fs::directory_entry& entry, const std::vector<DumpFile>& files) {
    const std::string name = entry.path().filename().string();
    const auto file = std::ranges::find(files, name, &DumpFile::name);
    Bytes content;
    return file != files.end() && is_plain(entry) &&
           read_file(entry.path().string(), file->content.size(), content).empty() &&
           content == file->content;
}

/// The first thing in the folder that no former dump of these files has left half done; empty if
/// there is none.
std::string in_the_way(const fs::path& folder, const std::vector<DumpFile>& files,
                       std::error_code& fault) {
    const fs::path waiting = folder / waiting_folder;
    const bool left_half_done = fs::is_directory(fs::symlink_status(waiting, fault));
    fault.clear();
    if (left_half_done)
        for (const fs::directory_entry& entry : fs::directory_iterator(waiting, fault))
            if (!waited(entry, files)) return entry.path().string();
    if (fault) return {};
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, fault))
        if (!left_half_done || (entry.path() != waiting && !arrived(entry, files)))
            return entry.path().string();
    return {};
}

/// Writes the files, all of them beside their places before the first moves there. Gives what went
/// wrong, empty if nothing did; then, and if the user wants to end, the waiting ones are gone.
std::string fill_folder(const fs::path& folder, const std::vector<DumpFile>& files, int end_fd) {
    const fs::path waiting = folder / waiting_folder;
    std::error_code fault, ignored;
    fs::remove_all(waiting, fault);
    if (!fault) fs::create_directory(waiting, fault);
    std::string what = fault ? fault.message() : "";
    bool ends = false;
    for (std::size_t i = 0; i < files.size() && what.empty() && !ends; ++i) {
        what = replace_file((waiting / files[i].name).string(), files[i].content, Backup::none);
        ends = wait_for_wake(end_fd, 0);
    }
    for (std::size_t i = 0; i < files.size() && what.empty() && !ends; ++i) {
        fs::rename(waiting / files[i].name, folder / files[i].name, fault);
        if (!fault) continue;
        what = fault.message();
        for (std::size_t moved = 0; moved < i; ++moved)
            fs::remove(folder / files[moved].name, ignored);
    }
    fs::remove_all(waiting, ignored);
    return what;
}

}  // namespace

void tell_error(const std::string& what) {
    tell_user(std::string(program_name) + ": error: " + what);
}

void put(const std::string& text) { write_stdout(visible_lines(text)); }

bool write_output(const std::string& path, const Bytes& content) {
    open_end_signals();
    const std::string fault = replace_file(path, content, Backup::none);
    obey_end_signals();
    if (!fault.empty()) tell_error("cannot write " + path + ": " + fault);
    return fault.empty();
}

bool write_folder(const std::string& path, const std::vector<DumpFile>& files) {
    const fs::path folder = path;
    std::error_code fault, ignored;
    const int end_fd = open_end_signals();
    const bool made = fs::create_directories(folder, fault);
    const std::string other = fault ? "" : in_the_way(folder, files, fault);
    std::string what = fault ? fault.message() : "";
    if (other.empty() && what.empty()) what = fill_folder(folder, files, end_fd);
    // Goes only if it is empty.
    if (made) fs::remove(folder, ignored);
    obey_end_signals();
    if (!what.empty())
        tell_error("cannot write into " + path + ": " + what);
    else if (!other.empty())
        tell_error(path + " isn't empty, it holds " + other + "; name a new folder");
    return other.empty() && what.empty();
}

}  // namespace orvanel
