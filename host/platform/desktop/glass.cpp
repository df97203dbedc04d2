#include "host/platform/desktop/glass.h"

#include "host/platform/desktop/scale.h"
#include "host/platform/desktop/text.h"
#include "host/skin/painting.h"
#include "host/skin/view.h"
#include "host/window/ground/input.h"
#include "host/window/ground/line_summary.h"
#include "host/window/roof/keyboard.h"
#include "host/window/roof/menu_command.h"
#include "seam/window_system.h"

#include <QEvent>
#include <QImage>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QVariant>
#include <QWheelEvent>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace orvanel {

namespace {

constinit std::vector<std::uint32_t> frame{};  // the client area, as compose_window leaves it

// Where in the window the mouse took hold of it, while it is dragged by hand.
constinit std::optional<QPoint> held_at{};

constexpr int wheel_step = 120;  // of QWheelEvent::angleDelta
constinit int wheel_turned = 0;  // what is left of a step; fine wheels send less than one

constexpr std::array keypad_without_numlock{
    Qt::Key_Insert, Qt::Key_End,   Qt::Key_Down, Qt::Key_PageDown, Qt::Key_Left,
    Qt::Key_Clear,  Qt::Key_Right, Qt::Key_Home, Qt::Key_Up,       Qt::Key_PageUp};

/// The digit of a key that counts to an Alt number, -1 for others.
int alt_digit_of(const QKeyEvent& event) {
    const int key = event.key();
    if (key >= Qt::Key_0 && key <= Qt::Key_9 && event.modifiers().testFlag(Qt::KeypadModifier))
        return key - Qt::Key_0;
    const auto* const found = std::ranges::find(keypad_without_numlock, key);
    return found == keypad_without_numlock.end()
               ? -1
               : static_cast<int>(found - keypad_without_numlock.begin());
}

/// 1..10 for F1 to F10, which is sent with Alt as well, else 0.
int function_of(const QKeyEvent& event) {
    const int number = event.key() - Qt::Key_F1 + 1;
    const bool alt = event.modifiers().testFlag(Qt::AltModifier);
    return number == 10 || (number >= 1 && number < 10 && !alt) ? number : 0;
}

/// What a key types. The Tab key types the same with Shift, which the toolkit doesn't tell.
QString text_of(const QKeyEvent& event) {
    if (event.key() == Qt::Key_Backtab) return QStringLiteral("\t");
    // Delete has a code of its own here that it hasn't as a character.
    return event.key() == Qt::Key_Delete ? QString() : event.text();
}

void type(const QString& text) {
    for (const uint character : text.toUcs4())
        character_typed(character);
}

}  // namespace

Glass::Glass(QWidget* parent) : QWidget(parent) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_InputMethodEnabled);
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
}

void Glass::fit() {
    frame.assign(
        static_cast<std::size_t>(window_width()) * static_cast<std::size_t>(window_height()), 0);
    setFixedSize(widget_size(window_width(), window_height(), devicePixelRatioF()));
    update();
}

void Glass::drag_by_hand() { held_at = window()->mapFromGlobal(QCursor::pos()); }

bool Glass::event(QEvent* event) {
    // Qt asks for the text again each time that it is about to show.
    if (event->type() == QEvent::ToolTip) setToolTip(to_qt(line_summary()));
    return QWidget::event(event);
}

/// The Tab key is a character like others.
bool Glass::focusNextPrevChild(bool /*next*/) { return false; }

void Glass::paintEvent(QPaintEvent* event) {
    const int width = window_width();
    const int height = window_height();
    // The size of the view may have changed since, and this paint is the old one's.
    if (frame.size() != static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) return;
    const QImage picture(reinterpret_cast<const uchar*>(frame.data()), width, height,
                         width * static_cast<int>(sizeof frame[0]), QImage::Format_RGB32);
    const qreal scale = devicePixelRatioF();
    QPainter painter(this);
    painter.scale(1 / scale, 1 / scale);  // the painter's pixels are the device's
    for (const QRect& area : event->region()) {
        const PixelRect part = covered(area, scale);
        compose_window(frame, part);
        const QRect inside =
            QRect(QPoint(part.left, part.top), QPoint(part.right - 1, part.bottom - 1)) &
            picture.rect();
        painter.drawImage(inside.topLeft(), picture, inside);
    }
}

void Glass::mousePressEvent(QMouseEvent* event) {
    const QPoint at = window_pixel(event->position(), devicePixelRatioF());
    if (event->button() == Qt::LeftButton) mouse_down(at.x(), at.y());
    if (event->button() == Qt::RightButton) right_mouse_down(at.x(), at.y());
}

void Glass::mouseDoubleClickEvent(QMouseEvent* event) { mousePressEvent(event); }

void Glass::mouseMoveEvent(QMouseEvent* event) {
    if (held_at) {
        window()->move(event->globalPosition().toPoint() - *held_at);
        return;
    }
    const QPoint at = window_pixel(event->position(), devicePixelRatioF());
    mouse_move(at.x(), at.y(), event->buttons().testFlag(Qt::LeftButton));
}

void Glass::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    if (held_at) {
        held_at.reset();
        return;
    }
    const QPoint at = window_pixel(event->position(), devicePixelRatioF());
    mouse_up(at.x(), at.y());
}

void Glass::wheelEvent(QWheelEvent* event) {
    if (!event->modifiers().testFlag(Qt::ControlModifier)) return event->ignore();
    wheel_turned += event->angleDelta().y();
    const int steps = wheel_turned / wheel_step;
    wheel_turned -= steps * wheel_step;
    if (steps != 0) zoom_by_wheel(steps);
}

void Glass::keyPressEvent(QKeyEvent* event) {
    const bool alt = event->modifiers().testFlag(Qt::AltModifier);
    if (const int number = function_of(*event); number != 0)
        function_key(number);
    else if (const int digit = alt ? alt_digit_of(*event) : -1; digit >= 0)
        alt_digit(digit);
    else if (const QString text = text_of(*event); !alt && !text.isEmpty())
        type(text);
    else
        QWidget::keyPressEvent(event);
}

void Glass::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Alt)
        alt_released();
    else
        QWidget::keyReleaseEvent(event);
}

/// What dead keys and the compose key put together.
void Glass::inputMethodEvent(QInputMethodEvent* event) { type(event->commitString()); }

QVariant Glass::inputMethodQuery(Qt::InputMethodQuery query) const {
    return query == Qt::ImEnabled ? QVariant(true) : QWidget::inputMethodQuery(query);
}

}  // namespace orvanel
