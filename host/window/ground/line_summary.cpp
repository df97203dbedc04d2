#include "host/window/ground/line_summary.h"

#include "link/ground/port.h"

#include <cstdint>

namespace orvanel {

namespace {

std::string count(std::uint64_t n, const char* one, const char* many) {
    return std::to_string(n) + (n == 1 ? one : many);
}

/// The line by itself.
std::string line_words() {
    const int port = com_port.load();
    if (port <= 0) return "No serial port";
    const bool framed = protocol_on.load();
    std::string text = "COM" + std::to_string(port) + ", " + std::to_string(line_baud.load()) +
                       " baud, " + (framed ? "Pactlink" : "plain bytes") + "\n" +
                       count(line_bytes_in.load(), " byte in, ", " bytes in, ") +
                       std::to_string(line_bytes_out.load()) + " out";
    if (!framed) return text;
    const std::uint64_t good = frames_good.load();
    const std::uint64_t bad = frames_bad.load();
    text += "\n" + count(good, " good frame, ", " good frames, ") + std::to_string(bad) + " bad; " +
            (module_selected.load() ? "selected" : "not selected");
    // The commonest of all mistakes, and nothing else tells of it.
    if (line_bytes_in.load() > 0 && good + bad == 0)
        text += "\nNo frame yet: plain bytes vanish while the protocol is Pactlink";
    return text;
}

}  // namespace

std::string line_summary() {
    const std::uint64_t dropped = answer_bytes_dropped.load();
    if (dropped == 0) return line_words();
    return line_words() + "\n" + count(dropped, " byte", " bytes") +
           " of answers dropped: nobody takes them";
}

}  // namespace orvanel
