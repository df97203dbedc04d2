#include "base/standard_output.h"

#include "base/files.h"

#include <cerrno>
#include <cstdio>

namespace orvanel {

namespace {

constinit int first_errno = 0;

}  // namespace

void write_stdout(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) < text.size() && first_errno == 0)
        first_errno = errno;
}

bool flush_stdout() {
    if (std::fflush(stdout) != 0 && first_errno == 0) first_errno = errno;
    return first_errno == 0 && std::ferror(stdout) == 0;
}

int stdout_errno() { return first_errno; }

std::string stdout_fault() {
    return "can't write to standard output" +
           (first_errno == 0 ? "" : ": " + errno_text(first_errno));
}

}  // namespace orvanel
