#include "host/platform/headless/fade.h"

#include "firmware/core/ground/backlight.h"
#include "host/scenario/waits.h"

namespace orvanel {

constinit std::int64_t next_fade_us = never;

void serve_fade_step() {
    next_fade_us += fade_step_us;
    backlight_fade_step();
}

}  // namespace orvanel
