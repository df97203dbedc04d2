#include "host/platform/desktop/ground.h"

#include "host/platform/desktop/scale.h"
#include "host/window/ground/input.h"
#include "seam/window_system.h"

#include <QMouseEvent>

namespace orvanel {

Ground::Ground(QWidget* module) {
    setFrameShape(QFrame::NoFrame);
    setAlignment(Qt::AlignCenter);
    setFocusPolicy(Qt::NoFocus);  // the keys are the module's
    setBackgroundRole(QPalette::Mid);
    setWidget(module);
}

QSize Ground::sizeHint() const { return widget()->size(); }

void Ground::mousePressEvent(QMouseEvent* event) {
    const QPoint at = window_pixel(widget()->mapFrom(this, event->position()), devicePixelRatioF());
    if (event->button() == Qt::LeftButton) drag_window();
    if (event->button() == Qt::RightButton) right_mouse_down(at.x(), at.y());
}

}  // namespace orvanel
