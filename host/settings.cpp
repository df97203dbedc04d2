#include "host/settings.h"

namespace orvanel {

constinit std::atomic<bool> beep_on{false};

}  // namespace orvanel
