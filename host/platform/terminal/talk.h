// talk.h: what the companion does with its connection.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvanel {

struct Talk {
    int connection;
    std::vector<std::uint8_t> bytes;  // to be sent first
    std::string file;                 // to be opened then, an absolute path; empty for none
    bool takes_input;                 // then standard input is sent as it comes
    bool shows_answers;               // and what the module sends is printed
    bool ends_when_quiet;             // once all is sent and nothing has come for `quiet_ms`
    int quiet_ms;
    bool hex;  // answers as HH, else as text with \xHH for what isn't printable
};

enum class TalkEnd : std::uint8_t {
    done,         // all that was wanted has been done, or the user has had enough
    module_gone,  // the program at the other end has ended
    no_output,    // standard output takes nothing any more
};

/// Talks until the end. SIGINT and SIGTERM end it in order.
TalkEnd run_talk(const Talk& talk);

}  // namespace orvanel
