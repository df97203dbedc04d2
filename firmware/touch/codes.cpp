#include "firmware/touch/codes.h"

#include "firmware/store/ground/macro.h"
#include "link/ground/answers.h"

#include <array>

namespace orvanel {

bool start_macro_by_touch(std::uint16_t table, std::uint8_t code) {
    if (!run_macro(table, code)) return false;
    auto_macro_mode.store(0);
    return true;
}

void fire_touch_code(std::uint8_t code) {
    if (!start_macro_by_touch(touch_macro_table, code)) answer_packet('A', std::array{code});
}

}  // namespace orvanel
