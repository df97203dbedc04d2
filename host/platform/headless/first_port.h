// first_port.h: the port that is open from the start.

#pragma once

#include <string>

namespace orvanel {

/// Opens the port that is to be open from the start, by the text of `--serial` if there is one, and
/// prints the name that its peer has to know. The result is empty on success, else why that of
/// `--serial` can't be opened; that of the settings may fail, which is reported. Before the
/// firmware runs.
std::string open_first_port(const std::string& serial);

}  // namespace orvanel
