#include "host/platform/desktop/menus.h"

#include "host/platform/desktop/glass.h"
#include "host/platform/desktop/scale.h"
#include "host/platform/desktop/text.h"
#include "host/window/ground/menu.h"
#include "host/window/roof/menu_command.h"
#include "seam/window_system.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QProxyStyle>
#include <QShortcut>

#include <algorithm>
#include <map>
#include <span>

namespace orvanel {

namespace {

std::map<int, QAction*> actions;  // by number of the item
constinit QMenu* popup = nullptr;

/// Alt doesn't move the focus to the menu bar: it begins a number on the keypad, and its release,
/// which ends that, has to reach the glass.
class MenuStyle final : public QProxyStyle {
  public:
    using QProxyStyle::QProxyStyle;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* result) const override {
        if (hint == SH_MenuBar_AltKeyNavigation) return 0;
        return QProxyStyle::styleHint(hint, option, widget, result);
    }
};

/// Qt has turned the mark of an item that was chosen. Only menu_command may.
void choose(int id) {
    menu_command(id);
    const auto found = actions.find(id);
    if (found != actions.end() && found->second->isCheckable())
        found->second->setChecked(menu_marked(id));
}

void add_item(QMenu& menu, const MenuRow& row) {
    QAction* const action = menu.addAction(to_qt(row.label));
    action->setMenuRole(QAction::NoRole);
    const int id = row.id;
    QObject::connect(action, &QAction::triggered, &menu, [id] { choose(id); });
    actions[id] = action;
}

/// Fills a menu with the rows from `row` on, and steps after its end.
void fill(QMenu& menu, std::span<const MenuRow> rows, std::size_t& row) {
    for (; row < rows.size(); ++row)
        switch (rows[row].part) {
        case MenuPart::submenu: {
            QMenu* const submenu = menu.addMenu(to_qt(rows[row].label));
            fill(*submenu, rows, ++row);
            break;
        }
        case MenuPart::item:
            add_item(menu, rows[row]);
            break;
        case MenuPart::separator:
            menu.addSeparator();
            break;
        case MenuPart::end:
            return;
        }
}

void add_shortcut(QMainWindow& window, const Shortcut& shortcut) {
    const QKeySequence keys(to_qt(shortcut.keys));
    if (const auto found = actions.find(shortcut.id); found != actions.end()) {
        found->second->setShortcut(keys);
        return;
    }
    auto* const alone = new QShortcut(keys, &window);
    const int id = shortcut.id;
    QObject::connect(alone, &QShortcut::activated, &window, [id] { menu_command(id); });
}

}  // namespace

void build_menus(QMainWindow& window) {
    actions.clear();
    QMenuBar* const bar = window.menuBar();
    bar->setNativeMenuBar(false);  // the popup shows the same menus
    auto* const style = new MenuStyle;
    style->setParent(bar);
    bar->setStyle(style);
    popup = new QMenu(&window);
    const std::span<const MenuRow> rows = menu_rows();
    for (std::size_t row = 0; row < rows.size(); ++row) {
        QMenu* const menu = bar->addMenu(to_qt(rows[row].label));
        fill(*menu, rows, ++row);
        popup->addMenu(menu);
    }
    for (const Shortcut& shortcut : shortcuts())
        add_shortcut(window, shortcut);
}

void mark_menu_item(int id, bool marked) {
    const auto found = actions.find(id);
    if (found == actions.end()) return;
    found->second->setCheckable(true);
    found->second->setChecked(marked);
}

void open_popup_menu(PixelPoint at) {
    const qreal scale = glass->devicePixelRatioF();
    popup->popup(glass->mapToGlobal(QPointF(at.x / scale, at.y / scale).toPoint()));
}

}  // namespace orvanel
