// title.h: the window's title, which tells port and protocol. Main thread.

#pragma once

namespace orvanel {

/// Puts name, port, speed and protocol into the title, as they are now. For whoever has called
/// com_select or choose_protocol, whether anything changed or not.
void title_update();

}  // namespace orvanel
