#include "firmware/raster/store_slots.h"

namespace orvanel {

constinit std::array<ScreenStore, 2> store_slots{};

void power_on_store() {
    for (ScreenStore& slot : store_slots)
        slot.height = 0;  // the bytes outlive a reset
}

void cold_start_store() { store_slots.fill({}); }

}  // namespace orvanel
