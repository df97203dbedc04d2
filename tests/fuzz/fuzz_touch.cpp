// fuzz_touch.cpp: fingers, commands of the touch groups, macros and resets in any order. The input
// is a list of steps, each taken when the module idles: a finger's place, a command with its bytes,
// a tick, or a reset.

#include "firmware/core/ground/requests.h"
#include "firmware/core/roof/loop.h"
#include "firmware/store/ground/eeprom.h"
#include "firmware/store/ground/macro.h"
#include "firmware/store/roof/timers.h"
#include "firmware/touch/areas.h"
#include "firmware/touch/bars.h"
#include "firmware/touch/finger.h"
#include "firmware/touch/menu.h"
#include "firmware/touch/menu_definitions.h"
#include "link/ground/pipes.h"
#include "tests/fuzz/steps.h"
#include "tests/support/fake_platform.h"
#include "tests/support/font_image.h"
#include "tests/support/module.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>
#include <vector>

namespace orvanel {
namespace {

constexpr long max_bytes = 20'000;

void put_record(std::vector<std::uint8_t>& image, std::size_t at, std::size_t offset,
                std::size_t length) {
    image[at] = static_cast<std::uint8_t>(offset);
    image[at + 1] = static_cast<std::uint8_t>(offset >> 8);
    image[at + 2] = static_cast<std::uint8_t>(length);
    image[at + 3] = static_cast<std::uint8_t>(length >> 8);
}

/// Touch and menu macros 0 to 63 that do what hurts an event in progress: define, remove, switch,
/// open and close. The codes above have none and go out as answers. Picture 1 has two images.
std::vector<std::uint8_t> image_with_macros() {
    constexpr std::string_view macros[]{
        "#AL0,1,",
        "#AL7,0,",
        "#AA0,#AA1,",
        "#AT10,10,60,60,1,2,Key\r",
        "#AM10,70,60,90,3,4,5,Ra|b|c\r",
        "#ND20,20,1,x|yy|z\r",
        "#NT2,",
        "#NA",
        "#NN#NS",
        "#BR1,100,10,200,30,0,200,1,1,#AB1,",
        "#BD1,1,",
        "#AP3,1,#AG1,",
        "#AV30,30,1,",
        "#MT2,",
        "#NM4,",
        "#AI0,",
    };
    constexpr std::uint8_t with_macro = 64;
    std::vector<std::uint8_t> image = image_with_font();
    std::size_t next = 0;
    for (std::size_t code = 0; code < with_macro; ++code, ++next) {
        const std::string_view text = macros[next % std::size(macros)];
        put_record(image, touch_macro_table + macro_record_size * code, image.size(), text.size());
        put_record(image, menu_macro_table + macro_record_size * code, image.size(), text.size());
        image.insert(image.end(), text.begin(), text.end());
    }
    image[picture_table + 2] = static_cast<std::uint8_t>(image.size());
    image[picture_table + 3] = static_cast<std::uint8_t>(image.size() >> 8);
    image.insert(image.end(), {12, 0x90});
    image.resize(image.size() + 2 * 16, 0x5A);
    return image;
}

constexpr std::string_view groups = "AAAABBNNNZUTR";

/// Small numbers for codes, slots and flags, and a grid of places: so that commands meet the same
/// areas again.
std::uint8_t parameter(std::uint8_t byte) {
    return byte < 0x80 ? byte % 8 : static_cast<std::uint8_t>((byte & 0x7C) * 2);
}

/// Kinds of steps by their first byte; the rest of the values are commands.
void take_step(std::span<const std::uint8_t>& steps) {
    const std::uint8_t kind = take(steps);
    if (kind < 0x50) {
        const int x = take(steps), y = take(steps);
        put_finger(std::min(x, last_x), std::min(y, last_y));
    } else if (kind < 0x70) {
        lift_finger();
    } else if (kind < 0x78) {
        firmware_tick();
    } else if (kind < 0x7A) {
        request_restart(kind & 3);
    } else {
        const std::size_t count = std::min<std::size_t>(kind & 0x0F, steps.size());
        const std::uint8_t letters = take(steps);
        const auto group = static_cast<std::uint8_t>(groups[letters % groups.size()]);
        const auto op = static_cast<std::uint8_t>('A' + take(steps) % 26);
        rx_pipe_put_block(std::vector<std::uint8_t>{0x1B, group, op});
        std::vector<std::uint8_t> params;
        for (const std::uint8_t byte : steps.first(std::min(count, steps.size())))
            params.push_back(parameter(byte));
        rx_pipe_put_block(params);
        steps = steps.subspan(std::min(count, steps.size()));
        rx_pipe_put_block(std::vector<std::uint8_t>{0});
    }
}

/// Words that index or count stay within their ranges.
void check_tables() {
    check(area_count <= max_touch_areas && cur_area <= max_touch_areas &&
          prev_area <= max_touch_areas && area_in_hand <= max_touch_areas);
    // In a full table another area may have taken the opener's row, or be taking it right now.
    check(menu_opener == no_opener ||
          menu_opener <= std::min<int>(area_count, max_touch_areas - 1));
    check(open_menu_slot == no_menu_slot || (open_menu_slot < 8 && menu_items > 0));
    check(bar_current >= -1 && bar_current < static_cast<int>(bar_slots.size()));
    if (bar_current >= 0)
        check(bar_work.pos >= std::min(bar_work.length, 0) &&
              bar_work.pos <= std::max(bar_work.length, 0) && bar_work.value < bar_work.steps);
}

/// Between two commands; within one, a row may be in the making.
void check_empty_rows() {
    for (std::size_t i = area_count; i < touch_areas.size(); ++i)
        check(touch_areas[i].type == AreaType::none);
}

}  // namespace
}  // namespace orvanel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvanel;
    static const std::vector<std::uint8_t> image = image_with_macros();
    fresh_module();
    eeprom_reset_to(eeprom_small, image);
    shutdown_requested = false;
    std::span steps(data, size);
    fake_platform.on_sleep = [&steps] {
        check_tables();
        if (rx_count() > 0) return;
        if (steps.empty()) shutdown_requested = true;
        take_step(steps);
    };
    fake_platform.byte_alarm = fake_platform.bytes_spent + max_bytes;
    fake_platform.on_byte_alarm = [] { shutdown_requested = true; };
    run_firmware();
    check_empty_rows();
    fresh_platform();
    shutdown_requested = false;
    return 0;
}
