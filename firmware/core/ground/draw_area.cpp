#include "firmware/core/ground/draw_area.h"

namespace orvanel {

constinit DrawArea draw_area{};

}  // namespace orvanel
