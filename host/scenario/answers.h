// answers.h: the scenario's side of tx_pipe and of the simulated line. It is the pipe's consumer on
// the host's main thread, while a reset on the firmware's may clear the pipe at any moment.

#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace orvanel {

enum class Match : std::uint8_t {
    not_yet,     // what is there is a beginning of it
    matched,     // it was there, and has been taken
    impossible,  // something else is there
};

/// Takes the bytes out of tx_pipe if they are the next ones there; takes all of them or none.
Match match_answers(std::span<const std::uint8_t> expected);

/// Takes all that waits in tx_pipe.
std::vector<std::uint8_t> take_answers();

/// The same on what has left on the simulated line.
Match match_line(std::span<const std::uint8_t> expected);
std::vector<std::uint8_t> take_line_sent();

/// What waits in tx_pipe, left there.
std::vector<std::uint8_t> waiting_answers();

}  // namespace orvanel
