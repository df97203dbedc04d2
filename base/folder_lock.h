// folder_lock.h: one program for each folder. The folder itself is locked, and a lock file in it
// says who has it and where that program takes messages; docs/reference/formats.md, "Companion".
// Main thread.

#pragma once

#include <cstdint>
#include <string>

namespace orvanel {

enum class FolderLock : std::uint8_t {
    taken,        // ours until the process ends, however it does
    taken_again,  // it had gone, or somebody else may have had it: what is in it need not be ours
    held,         // by another program
    failed,       // it can't be made or read, or something else stands where its lock file goes
};

/// Makes the folder if it isn't there and locks it. `fault` says what is wrong unless it is taken.
FolderLock lock_folder(const std::string& folder, std::string& fault);

/// Whether we still have the folder that lock_folder was asked for, before something is written
/// there. One that was removed is made again, and a lock file that was too, which alone leaves the
/// folder ours. Where nothing was ever locked it only makes the folder.
FolderLock keep_folder_lock(const std::string& folder, std::string& fault);

/// Whether there is a lock file of ours, to be found by others.
bool lock_is_told();

/// A short name of what is locked, which no other folder shares.
std::string lock_identity();

/// Writes the path of our socket into the lock file, empty for none. Where it can't be written
/// nobody finds us, and that is all.
void tell_socket(const std::string& path);

/// The lock file of a folder, and what the program that has it wrote there, a line each. Empty
/// where nothing was.
std::string lock_path(const std::string& folder);
struct LockContent {
    std::string socket;   // its path
    std::string process;  // its number
};
LockContent read_lock(const std::string& folder);

}  // namespace orvanel
