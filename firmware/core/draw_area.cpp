#include "firmware/core/draw_area.h"

namespace orvanel {

constinit DrawArea draw_area{};

}  // namespace orvanel
