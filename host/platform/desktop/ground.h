// ground.h: what the module lies on where the window system gives a window the size that it likes,
// as under Wayland: in the middle of a larger window, and under scroll bars in a smaller one.

#pragma once

#include <QScrollArea>

namespace orvanel {

class Ground final : public QScrollArea {
  public:
    /// Takes `module`, which keeps its own size.
    explicit Ground(QWidget* module);

    /// That of the module, so a window that may choose fits it.
    QSize sizeHint() const override;

  protected:
    /// Beside the module the buttons do what they do beside the glass.
    void mousePressEvent(QMouseEvent* event) override;
};

}  // namespace orvanel
