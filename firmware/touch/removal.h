// removal.h: taking areas away by what they are: the finger lets go first.

#pragma once

#include "firmware/touch/areas.h"

namespace orvanel {

/// Takes the finger off row `index` if it holds it, in front of its removal: a held key pops up and
/// nothing reacts until the finger is lifted.
void take_finger_off(int index);

/// Removes each row that matches, in one pass upward: the row that fills a hole is not looked at.
template <typename Match> void remove_touch_areas(Match match, bool erase) {
    for (int i = 0; i < area_count; ++i) {
        if (!match(touch_area(i))) continue;
        take_finger_off(i);
        remove_touch_area(i, erase);
    }
}

}  // namespace orvanel
