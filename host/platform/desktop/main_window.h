// main_window.h: the window itself: a frame with the menu bar around the glass, or cut to the
// outline of the module; its place, files that are dropped on it, and what is asked of it by
// seam/window_system.h.

#pragma once

#include "host/platform/desktop/glass.h"

#include <QMainWindow>

namespace orvanel {

class MainWindow final : public QMainWindow {
  public:
    MainWindow();

  protected:
    void closeEvent(QCloseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
};

/// It exists, and so does glass, from make_main_window to drop_main_window.
extern MainWindow* main_window;

/// Makes the window, hidden, in the present view.
void make_main_window();

/// Shows it where window_x and window_y say, or back on a screen if that is on none.
void show_main_window();

/// Keeps its place in window_x and window_y. Wayland doesn't tell it.
void keep_place();

void drop_main_window();

/// Where a window of that size goes that asks for this place of the screen: there, or if that is
/// off all screens, on the first one. False where the window system places windows by itself.
bool can_place_windows();
QPoint place_on_screen(QPoint at, QSize size);

}  // namespace orvanel
