#include "host/platform/desktop/main_window.h"

#include "host/import/picture_import.h"
#include "host/platform/desktop/ground.h"
#include "host/platform/desktop/menus.h"
#include "host/platform/desktop/scale.h"
#include "host/platform/desktop/text.h"
#include "host/program/settings.h"
#include "host/skin/view.h"
#include "host/window/ground/boxes.h"
#include "host/window/ground/dialog.h"
#include "host/window/ground/window_place.h"
#include "seam/window_system.h"

#include <QApplication>
#include <QCloseEvent>
#include <QCursor>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QIcon>
#include <QLayout>
#include <QMenuBar>
#include <QMimeData>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <QUrl>
#include <QWindow>

#include <cmath>
#include <optional>
#include <vector>

/// The pictures of data/art.qrc. Not within a namespace, or the toolkit doesn't find them.
static void load_art() { Q_INIT_RESOURCE(art); }

namespace orvanel {

constinit MainWindow* main_window = nullptr;
constinit Glass* glass = nullptr;

namespace {

// The shape that was asked for last. It is given to a window that has been shown: one that starts
// without a frame comes out beside its place once it gets one.
constinit bool is_on_top = false;
constinit std::optional<Outline> outline{};  // none: the frame
constinit bool shown = false;
constinit bool fits_later = false;  // to its content, as soon as the window system lets it
constexpr int max_reframing_ms = 500;
constinit bool is_reframed = false;  // the window manager may be about to change the frame
constinit QPoint client_wanted{};    // where the client area stays meanwhile
constinit QPoint frame_corner{};  // of the frame, from the client area; of the last frame there was

constexpr Qt::WindowFlags frame_flags = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                        Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                                        Qt::WindowCloseButtonHint;

qreal scale() { return glass->devicePixelRatioF(); }

Qt::WindowFlags wanted_flags() {
    Qt::WindowFlags flags = frame_flags;
    if (outline) flags |= Qt::FramelessWindowHint;
    if (is_on_top) flags |= Qt::WindowStaysOnTopHint;
    return flags;
}

/// Changes the flags of the window as it stands. setWindowFlags would hide it and show it again,
/// elsewhere and without the focus.
void set_flags() {
    main_window->overrideWindowFlags(wanted_flags());
    if (QWindow* handle = main_window->windowHandle()) handle->setFlags(wanted_flags());
}

/// The mask counts from the window's own corner, above which the menu bar lies.
void set_mask() {
    if (!outline && main_window->mask().isEmpty()) return;
    if (!outline) return main_window->clearMask();
    const QBitmap of_glass = mask_of(*outline, scale());
    main_window->setMask(QRegion(of_glass).translated(glass->mapTo(main_window, QPoint(0, 0))));
}

bool has_frame() { return !main_window->windowFlags().testFlag(Qt::FramelessWindowHint); }

/// Looks where the frame's corner lies. Of one that has just come back the toolkit doesn't know.
void learn_frame() {
    const QPoint corner =
        main_window->frameGeometry().topLeft() - main_window->geometry().topLeft();
    if (has_frame() && !corner.isNull()) frame_corner = corner;
}

/// A window manager that takes the frame away or gives it keeps the corner of the whole, and the
/// module on the screen moves by the frame's size. As soon as that happens it is moved back.
void take_shape() {
    if (!shown) return;
    const QPoint client = main_window->geometry().topLeft();
    learn_frame();
    const bool had_frame = has_frame();
    set_flags();
    set_mask();
    // Where the toolkit draws the frame itself, as under Wayland, it begins with an empty picture.
    main_window->update();
    glass->update();
    if (has_frame() == had_frame || !can_place_windows()) return;
    is_reframed = true;
    client_wanted = client;
    QTimer::singleShot(max_reframing_ms, main_window, [] { is_reframed = false; });
}

void take_scale() {
    screen_scale_percent = static_cast<int>(std::lround(scale() * 100));
    QMenuBar* const bar = main_window->menuBar();
    bar->setFixedHeight(whole_height(bar->sizeHint().height(), scale()));
}

/// The window has come to a screen of another scale.
void change_scale() {
    take_scale();
    resize_window();
    take_shape();
}

/// A window that has been maximised has a size that it must not leave: the compositor takes that
/// for a fault and ends the program.
bool is_spread() {
    return (main_window->windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen)) != 0;
}

QIcon program_icon() {
    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256})
        icon.addFile(QStringLiteral(":/icon/%1.png").arg(size));
    return icon;
}

/// The file that is dropped, the first of several; empty if there is none on this machine.
QString dropped_file(const QMimeData& data) {
    const QList<QUrl> urls = data.urls();
    return urls.isEmpty() ? QString() : urls.first().toLocalFile();
}

}  // namespace

MainWindow::MainWindow() {
    setWindowFlags(frame_flags);
    setAcceptDrops(true);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    keep_place();
    QMainWindow::closeEvent(event);
    // Not quit, which would close the ports panel as if by hand: it is to be there next time.
    QApplication::exit();
}

void MainWindow::moveEvent(QMoveEvent* event) {
    QMainWindow::moveEvent(event);
    if (!is_reframed || geometry().topLeft() == client_wanted) return;
    is_reframed = false;
    windowHandle()->setPosition(client_wanted);
}

void MainWindow::resizeEvent(QResizeEvent* event) {
    QMainWindow::resizeEvent(event);
    if (outline && !can_place_windows()) set_mask();  // the module has moved within the window
}

void MainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() != QEvent::WindowStateChange || !fits_later || is_spread()) return;
    fits_later = false;
    // Not before it has got the size that it had.
    QMetaObject::invokeMethod(this, resize_window, Qt::QueuedConnection);
}

void MainWindow::paintEvent(QPaintEvent* event) {
    QMainWindow::paintEvent(event);
    if (shown) return;
    shown = true;
    // Not within a paint.
    if (outline || is_on_top) QMetaObject::invokeMethod(this, take_shape, Qt::QueuedConnection);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!dropped_file(*event->mimeData()).isEmpty()) event->acceptProposedAction();
}

/// The menu bar is a place beside the glass like others.
void MainWindow::dropEvent(QDropEvent* event) {
    const QPoint at = window_pixel(glass->mapFrom(this, event->position()), scale());
    const QString path = dropped_file(*event->mimeData());
    // A copy, whatever was offered: nobody is to take the file away behind it.
    event->setDropAction(Qt::CopyAction);
    event->accept();
    drop_file(path.toStdString(), at.x(), at.y());
}

void make_main_window() {
    load_art();
    shown = false;
    fits_later = false;
    outline.reset();
    is_on_top = false;
    main_window = new MainWindow;
    main_window->setWindowIcon(program_icon());
    glass = new Glass(main_window);
    build_menus(*main_window);
    if (can_place_windows()) {
        main_window->setCentralWidget(glass);
        main_window->layout()->setSizeConstraint(QLayout::SetFixedSize);
    } else
        main_window->setCentralWidget(new Ground(glass));
    take_scale();
    resize_window();
    glass->setFocus();
}

bool can_place_windows() { return QGuiApplication::platformName() != "wayland"; }

QPoint place_on_screen(QPoint at, QSize size) {
    std::vector<PixelRect> screens;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect area = screen->geometry();
        screens.push_back(
            {area.left(), area.top(), area.left() + area.width(), area.top() + area.height()});
    }
    if (screens.empty()) return at;
    const auto [x, y] = brought_back({at.x(), at.y()}, size.width(), size.height(), screens);
    return {x, y};
}

void show_main_window() {
    main_window->ensurePolished();
    if (can_place_windows())
        main_window->move(place_on_screen({window_x, window_y}, main_window->sizeHint()));
    main_window->show();
    QObject::connect(main_window->windowHandle(), &QWindow::screenChanged, main_window,
                     change_scale);
}

/// Only here and not with each move: while a window manager takes it in, the frame is not yet
/// known.
void keep_place() {
    if (!main_window->isVisible() || main_window->isMinimized() || !can_place_windows()) return;
    learn_frame();
    // A cut window's place is that of the frame which it would have.
    const QPoint corner = main_window->geometry().topLeft() + frame_corner;
    window_moved(corner.x(), corner.y());
}

void drop_main_window() {
    drop_dialog();
    drop_boxes();
    delete main_window;
    main_window = nullptr;
    glass = nullptr;
}

// What window_system.h asks of the window.

void window_repaint() { glass->update(); }

void resize_window() {
    glass->fit();
    main_window->layout()->activate();
    if (can_place_windows()) return main_window->adjustSize();
    main_window->centralWidget()->updateGeometry();
    fits_later = is_spread();
    if (!fits_later) main_window->resize(main_window->sizeHint());
}

void show_window_frame() {
    outline.reset();
    take_shape();
}

void cut_window(const Outline& shape) {
    outline = shape;
    take_shape();
}

void set_window_on_top(bool on) {
    is_on_top = on;
    take_shape();
}

void set_window_title(std::string_view title) { main_window->setWindowTitle(to_qt(title)); }

void activate_window() {
    if (main_window->isMinimized()) main_window->showNormal();
    main_window->raise();
    main_window->activateWindow();
}

void close_window_soon() {
    QMetaObject::invokeMethod(main_window, &QWidget::close, Qt::QueuedConnection);
}

void drag_window() {
    QWindow* const handle = main_window->windowHandle();
    if (handle == nullptr || !handle->startSystemMove()) glass->drag_by_hand();
}

void set_pointer(Pointer pointer) {
    switch (pointer) {
    case Pointer::arrow:
        return glass->setCursor(Qt::ArrowCursor);
    case Pointer::move:
        return glass->setCursor(QCursor(QPixmap(":/cursor/move.png"), 15, 15));
    case Pointer::hand:
        return glass->setCursor(QCursor(QPixmap(":/cursor/hand.png"), 12, 4));
    }
}

std::optional<PixelPoint> pointer_position() {
    // Wayland tells of the mouse only while it is over the window.
    if (!can_place_windows() && !glass->underMouse()) return std::nullopt;
    const QPoint at = window_pixel(glass->mapFromGlobal(QPointF(QCursor::pos())), scale());
    return PixelPoint{at.x(), at.y()};
}

}  // namespace orvanel
