#include "host/platform/headless/session_options.h"

namespace orvanel {

SessionOptions session_options;

}  // namespace orvanel
