// glass.h: the widget that shows the module, skin and display, and takes mouse and keys. What
// they mean is decided in host/window.

#pragma once

#include <QWidget>

namespace orvanel {

class Glass final : public QWidget {
  public:
    explicit Glass(QWidget* parent);

    /// Takes the size of the window's picture at the present scale of the screen.
    void fit();

    /// Moves the window by the mouse until the button is up, where the window system doesn't.
    void drag_by_hand();

  protected:
    bool event(QEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;
};

/// The one there is, made and dropped with the window (main_window.h).
extern Glass* glass;

}  // namespace orvanel
