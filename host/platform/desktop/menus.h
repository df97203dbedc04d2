// menus.h: the menu bar and the popup, built from the table of host/window/ground/menu.h.

#pragma once

#include <QMainWindow>

namespace orvanel {

/// Gives the window its menu bar, the popup that shares its submenus, and all shortcuts. They end
/// with the window.
void build_menus(QMainWindow& window);

}  // namespace orvanel
