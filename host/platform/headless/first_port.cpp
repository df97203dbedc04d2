#include "host/platform/headless/first_port.h"

#include "base/visible.h"
#include "host/platform/life/start_port.h"
#include "host/scenario/commands.h"
#include "host/scenario/report.h"

namespace orvanel {

std::string open_first_port(const std::string& serial) {
    const int port = leading_port.value_or(start_port(serial));
    std::string fault = open_start_port(port, serial);
    if (!fault.empty() && !is_by_option(port, serial)) {
        tell_user("orvanel42-headless: error: " + fault);
        return {};
    }
    if (const std::string name = new_peer_name(serial); !name.empty())
        print_event("serial " + name);
    return fault;
}

}  // namespace orvanel
