#include "firmware/touch/menu_definitions.h"

#include "base/bytes.h"

#include <algorithm>

namespace orvanel {

constinit std::array<MenuBox, 8> menu_defs{};
constinit std::uint8_t open_menu_slot = 0;
constinit std::uint8_t menu_opener = 0;

void power_on_menu_definitions() {
    menu_opener = no_opener;
    open_menu_slot = no_menu_slot;
    for (MenuBox& menu : menu_defs)
        menu.items_text = 0;
}

std::uint8_t free_slot() {
    const auto found =
        std::ranges::find_if(menu_defs, [](const MenuBox& menu) { return menu.items_text == 0; });
    return found == menu_defs.end() ? no_menu_slot : low8(found - menu_defs.begin());
}

void free_menu_slot(std::uint8_t slot) {
    if (slot != no_menu_slot) menu_defs[slot].items_text = 0;
}

}  // namespace orvanel
