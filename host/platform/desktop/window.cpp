#include "host/platform/desktop/window.h"

#include "firmware/core/backlight.h"
#include "host/line_summary.h"
#include "host/main_requests.h"
#include "host/painter.h"
#include "host/picture_import.h"
#include "host/platform/platform.h"
#include "host/platform/shared/real_time.h"
#include "host/platform/shared/start_port.h"
#include "host/platform/shared/wake.h"
#include "host/platform/window_system.h"
#include "host/settings.h"
#include "host/skin/painting.h"
#include "host/skin/view.h"
#include "host/window_input.h"
#include "host/window_place.h"
#include "host/window_timer.h"

#include <QApplication>
#include <QCloseEvent>
#include <QEvent>
#include <QImage>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScreen>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace orvanel {

constinit bool ended_by_signal = false;

namespace {

constexpr int window_timer_ms = 100;
constexpr int fade_step_ms = 20;

QString to_qt(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

class Glass final : public QWidget {
  protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
};

constinit Glass* glass = nullptr;
constinit std::vector<std::uint32_t> frame{};  // the client area, as compose_window leaves it
constinit QTimer* fade_timer = nullptr;        // a child of the glass
constinit int main_wake = -1;                  // set by firmware_thread when it wants a paint

/// Wayland neither takes a place for a window nor tells the one that it has.
bool windows_have_a_place() { return QGuiApplication::platformName() != "wayland"; }

void place_window() {
    std::vector<PixelRect> screens;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect area = screen->geometry();
        screens.push_back(
            {area.left(), area.top(), area.left() + area.width(), area.top() + area.height()});
    }
    if (screens.empty() || !windows_have_a_place()) return;
    bring_window_back(screens, glass->width(), glass->height());
    glass->move(window_x, window_y);
}

/// Only here and not with each move: while a window manager takes it in, the frame is not yet
/// known.
void keep_place() {
    if (!glass->isVisible() || glass->isMinimized() || !windows_have_a_place()) return;
    const QPoint corner = glass->frameGeometry().topLeft();
    window_moved(corner.x(), corner.y());
}

bool Glass::event(QEvent* event) {
    // Qt asks for the text anew each time that it is about to show.
    if (event->type() == QEvent::ToolTip) setToolTip(to_qt(line_summary()));
    return QWidget::event(event);
}

void Glass::closeEvent(QCloseEvent* event) {
    keep_place();
    QWidget::closeEvent(event);
}

void Glass::paintEvent(QPaintEvent* event) {
    const int w = window_width();
    const int h = window_height();
    const QImage picture(reinterpret_cast<const uchar*>(frame.data()), w, h,
                         w * static_cast<int>(sizeof frame[0]), QImage::Format_RGB32);
    QPainter painter(this);
    for (const QRect& part : event->region()) {
        const QRect inside = part & QRect(0, 0, w, h);
        compose_window(frame, {inside.left(), inside.top(), inside.left() + inside.width(),
                               inside.top() + inside.height()});
        painter.drawImage(inside, picture, inside);
    }
}

void Glass::mousePressEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint();
    if (event->button() == Qt::LeftButton) mouse_down(at.x(), at.y());
}

void Glass::mouseMoveEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint();
    mouse_move(at.x(), at.y(), event->buttons().testFlag(Qt::LeftButton));
}

void Glass::mouseReleaseEvent(QMouseEvent* event) {
    const QPoint at = event->position().toPoint();
    if (event->button() == Qt::LeftButton) mouse_up(at.x(), at.y());
}

void make_glass() {
    frame.resize(static_cast<std::size_t>(window_width()) *
                 static_cast<std::size_t>(window_height()));
    glass = new Glass;
    glass->setAttribute(Qt::WA_OpaquePaintEvent);
    glass->setWindowFlags(Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                          Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                          Qt::WindowCloseButtonHint);
    glass->setWindowTitle("HD Orvanel42 simulator");
    glass->setFixedSize(window_width(), window_height());
}

/// Has the event loop run `action` whenever `fd` has been set; ends with the window.
void on_wake(int fd, void (*action)()) {
    auto* notifier = new QSocketNotifier(fd, QSocketNotifier::Read, glass);
    QObject::connect(notifier, &QSocketNotifier::activated, glass, [fd, action] {
        take_wake(fd);
        action();
    });
}

void make_fade_timer() {
    fade_timer = new QTimer(glass);
    fade_timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(fade_timer, &QTimer::timeout, glass, backlight_fade_step);
}

void start_window_timer() {
    auto* timer = new QTimer(glass);
    timer->setTimerType(Qt::PreciseTimer);
    QObject::connect(timer, &QTimer::timeout, glass, window_timer);
    timer->start(window_timer_ms);
}

/// The port that is open from the start. Why it can't be opened is for who has started us; the user
/// has a message.
void open_port(const std::string& serial) {
    const std::string fault = open_start_port(serial);
    if (!fault.empty()) std::fprintf(stderr, "orvanel42: %s\n", fault.c_str());
    const std::string name = new_peer_name(serial);
    if (name.empty()) return;
    std::printf("serial %s\n", name.c_str());
    std::fflush(stdout);
}

}  // namespace

bool open_window(const std::string& file, const std::string& serial) {
    main_wake = open_wake();
    const int end_wake = open_end_signals();
    if (!open_real_time() || main_wake < 0 || end_wake < 0) return false;
    make_glass();
    place_window();
    glass->show();
    on_wake(main_wake, serve_main_requests);
    ended_by_signal = false;
    on_wake(end_wake, [] {
        ended_by_signal = true;
        QApplication::quit();
    });
    make_fade_timer();
    start_window_timer();
    open_port(serial);
    open_painter();
    start_module();
    if (!file.empty()) open_feed(file, 0, 0);
    return true;
}

void close_window() {
    stop_module();
    keep_place();
    close_end_signals();
    delete glass;
    glass = nullptr;
    close_wake(main_wake);
    close_real_time();
}

// The platform: real time, and the window above.

void sleep_ms(int ms) { real_sleep_ms(ms); }

void sleep_until_input(int ms) { real_sleep_until_input(ms); }

void wake_firmware() { real_wake_firmware(); }

void spend_byte_time() {}

bool on_main_thread() { return real_on_main_thread(); }

std::int64_t clock_ms() { return real_clock_ms(); }

void wake_main() { set_wake(main_wake); }

void paint_window(PixelRect rect) {
    // A hidden or minimised window paints nothing here, and all of it when it shows again.
    glass->repaint(rect.left, rect.top, rect.right - rect.left, rect.bottom - rect.top);
}

void repaint_window() { glass->update(); }

void set_fade_timer(bool runs) {
    if (runs)
        fade_timer->start(fade_step_ms);
    else
        fade_timer->stop();
}

void open_message_box(std::string_view caption, std::string_view text) {
    // Without a loop of its own: the event loop goes on, and so do ticks, feeds and paints.
    auto* box =
        new QMessageBox(QMessageBox::Critical, to_qt(caption), to_qt(text), QMessageBox::Ok, glass);
    box->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(box, &QMessageBox::finished, glass, [](int /*button*/) { message_closed(); });
    box->open();
}

void sound_beep() { QApplication::beep(); }

}  // namespace orvanel
