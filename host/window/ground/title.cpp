#include "host/window/ground/title.h"

#include "link/ground/port.h"
#include "seam/window_system.h"

#include <string>

namespace orvanel {

void title_update() {
    std::string title = "HD Orvanel42 simulator";
    if (const int port = com_port.load(); port >= 1)
        title += " COM" + std::to_string(port) + ":" + std::to_string(com_baud.load()) +
                 (protocol_on.load() ? " [Pactlink]" : "");
    set_window_title(title);
}

}  // namespace orvanel
