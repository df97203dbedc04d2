#include "host/platform/system/process.h"

#include "base/standard_output.h"
#include "base/visible.h"
#include "host/platform/system/program_dir.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace orvanel {

namespace {

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

}  // namespace

std::string data_folder() { return find_data_dir(variable("XDG_DATA_HOME"), variable("HOME")); }

std::string own_folder() {
    std::error_code unknown;
    const std::string program = std::filesystem::read_symlink("/proc/self/exe", unknown);
    const std::string folder = unknown ? "" : find_program_dir(program, "/");
    const bool writable = access(folder.c_str(), W_OK) == 0;
    return choose_program_dir(folder, writable, variable("XDG_DATA_HOME"), variable("HOME"));
}

void prepare_process() {
    constexpr int standard_descriptors = 3;
    // Each open takes the lowest number that is free, which a higher one ends.
    for (int fd = 0; fd >= 0 && fd < standard_descriptors;) {
        if (fcntl(fd, F_GETFD) >= 0)
            ++fd;
        else if (open("/dev/null", O_RDONLY) < 0)
            break;
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

bool output_is_whole(const char* program) {
    if (flush_stdout()) return true;
    if (stdout_errno() != EPIPE) tell_user(std::string(program) + ": error: " + stdout_fault());
    return false;
}

}  // namespace orvanel
