#include "host/scenario/ending.h"

#include "firmware/core/ground/requests.h"

namespace orvanel {

namespace {

constinit bool ended = false;

}  // namespace

bool scenario_ended() { return ended; }

void end_scenario() {
    ended = true;
    shutdown_requested.store(true);
}

}  // namespace orvanel
