#include "tests/support/module.h"

#include "firmware/core/ground/requests.h"
#include "firmware/core/roof/loop.h"
#include "firmware/core/roof/power_on.h"
#include "firmware/store/ground/eeprom.h"
#include "link/ground/pipes.h"
#include "tests/support/fake_platform.h"

#include <algorithm>

namespace orvanel {

void fresh_module() {
    fresh_platform();
    cold_start();
    eeprom_reset_to(eeprom_small, {});
}

void run_stream(std::span<const std::uint8_t> stream, long max_bytes) {
    shutdown_requested = false;
    fake_platform.on_sleep = [&stream] {
        constexpr std::size_t max_at_once = low_mark;
        if (rx_count() > 0) return;
        if (stream.empty()) shutdown_requested = true;
        const auto next = stream.first(std::min(stream.size(), max_at_once));
        rx_pipe_put_block(next);
        stream = stream.subspan(next.size());
    };
    fake_platform.byte_alarm = fake_platform.bytes_spent + max_bytes;
    fake_platform.on_byte_alarm = [] { shutdown_requested = true; };
    run_firmware();
    fake_platform.on_sleep = fake_platform.on_byte_alarm = nullptr;
    shutdown_requested = false;
}

}  // namespace orvanel
