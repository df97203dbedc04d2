// Real time under load: the firmware draws without a pause while the main thread feeds it, resets
// it, ticks and paints, until enough of each has happened. Meant for the thread sanitizer. What
// hangs runs into the limit of the test.

#include "firmware/core/ground/requests.h"
#include "firmware/store/ground/eeprom.h"
#include "host/platform/headless/end_signals.h"
#include "host/platform/headless/real_session.h"
#include "host/platform/headless/session.h"
#include "host/platform/headless/time_mode.h"
#include "host/requests/painter.h"
#include "host/scenario/answers.h"
#include "host/scenario/runner.h"
#include "link/feeds/feeds.h"
#include "link/ground/pipes.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

using namespace orvanel;

constexpr std::int64_t between_resets_us = 30'000;
constexpr std::uint32_t paints_wanted = 3000;
constexpr int resets_wanted = 200;
constexpr int ticks_wanted = 100;

/// Lines, fills, flashing areas, text with scrolling, and questions.
std::vector<std::uint8_t> drawing_stream() {
    std::string stream = "#QZ1;";
    for (int i = 0; i < 200; ++i) {
        const std::string x = std::to_string(i);
        stream.append("#GD").append(x).append(",0,239,100;#RI").append(x);
        stream.append(",5,60,90;#QI0,0,").append(x).append(",20;plain text\r\n#SV#SI#DI");
    }
    return {stream.begin(), stream.end()};
}

bool enough(int resets) {
    return paints_served() >= paints_wanted && resets >= resets_wanted &&
           window_timers_run() >= ticks_wanted;
}

}  // namespace

int main() {
    const std::vector<std::uint8_t> stream = drawing_stream();
    choose_time_mode(real_time);
    eeprom_reset_to(eeprom_small, {});
    take_end_signals();
    open_painter();  // as if there were a window: the hand-over of paints is soaked, too
    if (!open_scenario("").empty() || !start_session().empty()) return 1;
    int resets = 0;
    std::int64_t next_reset_us = between_resets_us;
    bool reset_asked = false;
    while (!enough(resets)) {
        turn_real_session();
        take_answers();
        if (feed_left() == 0) start_feed_memory(stream);
        if (rx_count() < high_mark / 2) rx_pipe_put_block(stream);
        if (reset_asked && !restart_requested.load()) {
            ++resets;
            reset_asked = false;
        }
        if (!reset_asked && real_clock_us() >= next_reset_us) {
            request_restart(static_cast<std::uint8_t>(resets % 4));
            reset_asked = true;
            next_reset_us = real_clock_us() + between_resets_us;
        }
    }
    const std::uint32_t paints = paints_served();
    close_real_session();
    std::printf("%u paints, %d resets, %d ticks, %llu bytes\n", paints, resets, window_timers_run(),
                static_cast<unsigned long long>(real_bytes_delivered()));
    return 0;
}
