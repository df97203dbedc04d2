#include "host/platform/terminal/raw_mode.h"

#include <termios.h>
#include <unistd.h>

#include <cstdlib>

namespace orvanel {

namespace {

constinit termios former{};
constinit bool is_raw = false;

}  // namespace

void begin_raw_mode() {
    if (is_raw || tcgetattr(STDIN_FILENO, &former) != 0) return;
    termios raw = former;
    raw.c_iflag &= ~static_cast<tcflag_t>(IXON | ICRNL | INLCR | IGNCR | ISTRIP);
    raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | IEXTEN);
    // Of the keys that send signals one is left; the others are bytes for the module.
    raw.c_cc[VQUIT] = raw.c_cc[VSUSP] = _POSIX_VDISABLE;
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    if (tcsetattr(STDIN_FILENO, TCSANOW, &raw) != 0) return;
    is_raw = true;
    std::atexit(end_raw_mode);
}

void end_raw_mode() {
    if (is_raw) tcsetattr(STDIN_FILENO, TCSANOW, &former);
    is_raw = false;
}

}  // namespace orvanel
