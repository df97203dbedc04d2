#include "kit/output.h"

#include "base/safe_file.h"
#include "base/visible.h"
#include "host/platform/system/wake.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace orvanel {

namespace {

namespace fs = std::filesystem;

// Where a folder's files wait until all of them are written.
constexpr const char* waiting_folder = "unfinished-dump";

/// Whether the folder holds nothing but what a former dump of these files had to leave.
bool is_free(const fs::path& folder, const std::vector<DumpFile>& files, std::error_code& fault) {
    const bool left_half_done = fs::exists(folder / waiting_folder, fault);
    for (fs::directory_iterator entry(folder, fault), end; !fault && entry != end;
         entry.increment(fault)) {
        const std::string name = entry->path().filename().string();
        const bool ours = std::any_of(files.begin(), files.end(),
                                      [&](const DumpFile& file) { return file.name == name; });
        if (name != waiting_folder && !(left_half_done && ours)) return false;
    }
    return true;
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

void put(const std::string& text) {
    const std::string shown = visible_lines(text);
    std::fwrite(shown.data(), 1, shown.size(), stdout);
}

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
    const bool free = !fault && is_free(folder, files, fault);
    std::string what = fault ? fault.message() : "";
    if (free && what.empty()) what = fill_folder(folder, files, end_fd);
    // Goes only if it is empty.
    if (made) fs::remove(folder, ignored);
    obey_end_signals();
    if (!what.empty())
        tell_error("cannot write into " + path + ": " + what);
    else if (!free)
        tell_error(path + " isn't empty; name a new folder");
    return free && what.empty();
}

}  // namespace orvanel
