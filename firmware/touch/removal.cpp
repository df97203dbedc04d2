#include "firmware/touch/removal.h"

#include "firmware/touch/finger.h"
#include "firmware/touch/look.h"

namespace orvanel {

void take_finger_off(int index) {
    if (cur_area != index + 1) return;
    if (touch_invert && touch_area(index).type == AreaType::key) invert_touch_area(index);
    cur_area = 0;
    wait_release = true;
}

}  // namespace orvanel
